// The calibration document's sizes of the depth image before and after downsampling.
#pragma once

#include <optional>

namespace json11 {
class Json;
}

namespace QVR {

// Pixels.
struct MiniDepth {
    unsigned int fullX;
    unsigned int fullY;
    unsigned int miniX;
    unsigned int miniY;
};

// Nothing when the document asks for no other size than the full one, for one that makes no image,
// or for one that no server can send, which is logged.
std::optional<MiniDepth> readMiniDepth(const json11::Json& document);

} // namespace QVR
