#include "camera/cWandManager.h"

namespace QVR {

void cWandManager::init() {}

void cWandManager::update() {}

void cWandManager::shutdown() {}

} // namespace QVR
