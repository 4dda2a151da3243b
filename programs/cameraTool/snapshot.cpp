#include "cameraTool/snapshot.h"

#include "common/cameraCall.h"
#include "recording/pngEncoder.h"
#include "server/ServerError.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <locale>
#include <sstream>
#include <system_error>
#include <vector>

namespace cameraTool {

namespace fs = std::filesystem;
using server::ServerError;

namespace {

void makeFolder(const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        throw ServerError(server::exitUnexpected,
                          "cannot make the folder " + folder + ": " + error.message());
    }
}

void write(const fs::path& path, const std::vector<std::uint8_t>& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    // Pictures show people.
    std::error_code ignored;
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write, ignored);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        throw ServerError(server::exitUnexpected,
                          "cannot write " + path.string() + ": " + std::strerror(errno));
    }
}

class Album {
  public:
    Album(const OpenCamera& camera, fs::path folder)
        : camera_(camera), folder_(std::move(folder)) {}

    void addDepth(rs_stream stream, const char* name) {
        const rs_stream_mode size = camera_.mode(stream);
        recording::encodeDepth(camera_.depth(stream), size.width, size.height, file_);
        std::ostringstream unit;
        unit.imbue(std::locale::classic());
        unit << 1000.0F * programs::cameraCall(rs_get_device_depth_scale,
                                               static_cast<const rs_device*>(camera_.device()));
        add(name, size, ", depth, one unit is " + unit.str() + " mm");
    }
    void addColor(rs_stream stream, const char* name) {
        const rs_stream_mode size = camera_.mode(stream);
        recording::encodeColor(camera_.color(stream), size.width, size.height, file_);
        add(name, size, ", colour");
    }
    const std::string& text() const { return text_; }

  private:
    void add(const char* name, const rs_stream_mode& size, const std::string& what) {
        const fs::path path = folder_ / name;
        write(path, file_);
        text_ += path.string() + ": " + std::to_string(size.width) + "x" +
                 std::to_string(size.height) + what + "\n";
    }

    const OpenCamera& camera_;
    fs::path folder_;
    std::vector<std::uint8_t> file_;
    std::string text_;
};

} // namespace

std::string takeSnapshot(OpenCamera& camera, std::uint64_t passed, const std::string& folder) {
    makeFolder(folder);
    camera.start();
    for (std::uint64_t frame = 0; frame <= passed; ++frame) {
        camera.wait();
    }
    Album album(camera, folder);
    album.addDepth(RS_STREAM_DEPTH, "depth.png");
    if (camera.hasColor()) {
        album.addColor(RS_STREAM_COLOR, "color.png");
        album.addDepth(RS_STREAM_DEPTH_ALIGNED_TO_COLOR, "depth_aligned_to_color.png");
        album.addColor(RS_STREAM_COLOR_ALIGNED_TO_DEPTH, "color_aligned_to_depth.png");
    }
    return album.text();
}

} // namespace cameraTool
