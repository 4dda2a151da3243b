// The picture buffers that a host lends to the plug-in.
#pragma once

#include "host/Plugin.h"
#include "host/Snapshot.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace host {

// The plug-in converts each stream into a buffer of 4 bytes a pixel. It tells the sizes of the
// colour and the depth picture, but not that of the processed picture, which keeps the camera's
// resolution when the depth picture is sent smaller. So the processed buffer is a reserve of
// address space for every possible size, of which only what is written takes memory.
class Textures {
  public:
    Textures();
    ~Textures();
    Textures(const Textures&) = delete;
    Textures& operator=(const Textures&) = delete;

    // Hands the buffers to the plug-in, in the sizes it tells now. After the first frame of every
    // connection.
    void lend(const PluginFunctions& plugin);
    // The streams of the last frame. A stream that is not sent, or that is larger than any camera
    // sends (64 million pixels), gives an empty picture.
    Snapshot take(const PluginFunctions& plugin);

    // The size of a picture of `pixels` pixels whose shape is nearest to width : height.
    static std::optional<std::pair<int, int>> sizeLike(std::size_t pixels, int width, int height);

  private:
    struct Buffer {
        int width = 0;
        int height = 0;
        std::vector<unsigned char> bytes;
    };

    static void resize(Buffer& buffer, int width, int height);
    programs::GrayImage takeProcessed(const PluginFunctions& plugin);

    Buffer color_;
    Buffer depth_;
    unsigned char* reserve_ = nullptr; // null when the system gives no address space
};

} // namespace host
