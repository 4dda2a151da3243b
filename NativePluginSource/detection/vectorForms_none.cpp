// Processors without a vector form of ours.
#include "detection/vectorForms.h"

namespace QVR {

std::span<const VectorForm> vectorForms() {
    return {};
}

} // namespace QVR
