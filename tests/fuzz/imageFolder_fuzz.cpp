// A folder of depth and colour pictures as a camera.
//
// Input: switches, the length of the options behind the folder's name and the options, then files:
// which of the names below, the length in two bytes, the bytes.
#include "fuzzing.h"
#include "source_uri.h"
#include "support/TemporaryFolder.h"

#include <exception>
#include <filesystem>

#include <zlib.h>

namespace {

constexpr const char* fileNames[] = {"depth_0.png", "depth_1.png", "color_0.png", "color_1.png",
                                     "7.PNG",       "color_7.png", "notes.txt"};
constexpr std::size_t signatureSize = 8;
constexpr std::size_t chunkFrame = 12; // length, type and checksum

std::uint32_t bigEndian(const std::string& bytes, std::size_t place) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        value = value << 8U | static_cast<unsigned char>(bytes[place + i]);
    }
    return value;
}

// Sets the checksums of a PNG's chunks right: else nearly every change to one would end there.
void mendChecksums(std::string& png) {
    std::size_t chunk = signatureSize;
    while (chunk + chunkFrame <= png.size()) {
        const std::size_t length = bigEndian(png, chunk);
        if (length > png.size() - chunk - chunkFrame) {
            return;
        }
        const auto sum = crc32(0, reinterpret_cast<const Bytef*>(png.data()) + chunk + 4,
                               static_cast<uInt>(length + 4));
        for (std::size_t i = 0; i < 4; ++i) {
            png[chunk + 8 + length + i] = static_cast<char>(sum >> (24 - 8 * i));
        }
        chunk += length + chunkFrame;
    }
}

// Large pictures cost time and show nothing that smaller ones do not.
bool isLarge(const std::string& png) {
    constexpr std::size_t sizePlace = 16;
    return png.size() >= sizePlace + 8 &&
           std::uint64_t{bigEndian(png, sizePlace)} * bigEndian(png, sizePlace + 4) > 1U << 18;
}

// False when a picture is large.
bool writeFiles(fuzzing::Input& input, bool mended, const support::TemporaryFolder& folder) {
    while (input.left() > 3) {
        const std::string name = fileNames[input.byte() % std::size(fileNames)];
        std::string bytes = input.text(input.number<std::uint16_t>());
        if (isLarge(bytes)) {
            return false;
        }
        if (mended) {
            mendChecksums(bytes);
        }
        folder.write(name, bytes);
    }
    return true;
}

void play(const std::string& uri) {
    const auto source = camera::makeSource(uri);
    const camera::CameraGeometry geometry = source->configure({}, {});
    const auto pixels = [](const rs_intrinsics& lens) {
        return static_cast<std::size_t>(lens.width) * static_cast<std::size_t>(lens.height);
    };
    std::vector<std::uint16_t> depth(pixels(geometry.depth));
    std::vector<std::uint8_t> color(pixels(geometry.color) * 3);
    for (std::uint64_t number = 0; number < 3; ++number) {
        source->render(number, depth, color);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const support::TemporaryFolder folder;
    fuzzing::Input input(data, size);
    const bool mended = (input.byte() & 1U) != 0;
    const std::string options = input.text(input.byte());
    if (!writeFiles(input, mended, folder)) {
        return 0;
    }
    try {
        play("images:" + folder.path() + options);
    } catch (const std::exception& problem) {
        fuzzing::require(problem.what()[0] != '\0', "a refusal says why");
    }
    return 0;
}
