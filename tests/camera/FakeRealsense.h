// A scripted camera library: linked instead of the real one, it records every call, fails where a
// test says so, and delivers whatever pictures a test puts in.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <librealsense/rs.h>

namespace support {

struct ImageSize {
    int width = 0;
    int height = 0;
};

class FakeRealsense {
  public:
    // The state behind the rs_* functions. A fixture starts with reset().
    static FakeRealsense& get();
    void reset();

    // Makes the `occurrence`th call of `function` from now on fail (once) with the message
    // "message of FUNCTION" and the arguments "args of FUNCTION".
    void failAt(const std::string& function, int occurrence = 1);

    // What a wait throws instead of waiting, as a standard exception; "" for nothing.
    std::string waitThrows;

    // The calls so far, as "rs_get_device(context, 0)"; a call without error slot ends in
    // ", no slot)". Forgets them.
    std::vector<std::string> takeCalls();
    // How often `function` has been called since the last takeCalls().
    int countCalls(const std::string& function) const;

    // What the camera is like. Sizes of 0 mean: as requested.
    bool nullContext = false;
    bool nullDevice = false;
    int deviceCount = 1;
    bool nullTexts = false;
    ImageSize deliveredColor;
    ImageSize deliveredDepth;
    float depthScale = 0.001f;
    rs_extrinsics colorToDepth = {};
    rs_extrinsics depthToColor = {};
    rs_intrinsics colorIntrinsics = {};
    rs_intrinsics depthIntrinsics = {};

    // What it could not do as asked, told once.
    std::string notices;

    // What it delivers; start fills in images of the delivered sizes where these are empty.
    std::vector<std::uint16_t> depthImage;
    std::vector<std::uint8_t> colorImage;
    bool nullDepth = false;
    bool nullColor = false;

    // What state it is in.
    bool streaming = false;
    ImageSize requestedColor;
    ImageSize requestedDepth;
    int contextsMade = 0;
    int contextsDeleted = 0;

    // For the rs_* functions: notes the call and says whether it fails; then the slot is filled.
    bool note(const std::string& function, const std::string& arguments, rs_error** error);
    ImageSize sizeOf(rs_stream stream) const;

  private:
    std::vector<std::string> calls;
    std::map<std::string, int> countdown; // calls left until the failing one
};

} // namespace support
