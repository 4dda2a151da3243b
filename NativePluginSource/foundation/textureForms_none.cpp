// Processors without a vector form of ours.
#include "foundation/textureForms.h"

namespace QVR {

std::span<const VectorTextureForm> vectorTextureForms() {
    return {};
}

} // namespace QVR
