#include "detection/touchManager.h"

#include "detection/settingField.h"
#include "detection/touchCalibration.h"
#include "foundation/Logger.h"
#include "foundation/SettingsSection.h"

#include <limits>

#include <json11.hpp>

namespace QVR {

namespace {

constexpr Vector3 noPosition{-1.0, -1.0, -1.0};

// Wraps, so that no margin a document can hold is out of bounds.
int boundFromMargin(int size, int margin) {
    return static_cast<int>(static_cast<unsigned int>(size) - static_cast<unsigned int>(margin));
}

void tellEmptyBounds(const SettingsSection& margins, const char* key, int lower, int upper) {
    if (lower >= upper) {
        margins.tell(
            key, "bounds of " + std::to_string(lower) + " to " + std::to_string(upper) + " pixels",
            "them, which reports no touch");
    }
}

} // namespace

touchManager::touchManager() : networkTouches(std::make_unique<NetworkTouch[]>(touchSlots.size())) {
    touchData.fill(-1.0);
}

void touchManager::update(std::array<cImageBlob, 10>& blobs) {
    for (cTouch& slot : touchSlots) {
        if (slot.confidence >= 0) {
            slot.confidence -= 1;
        }
        slot.matched = false;
    }
    for (cImageBlob& blob : blobs) {
        if (!blob.valid) {
            continue;
        }
        float x = 0.0f;
        float y = 0.0f;
        float depth = 0.0f;
        blob.getCenter(x, y, depth);
        cTouch* slot = nearestUnmatchedSlot(x, y, depth);
        if (slot == nullptr) {
            slot = leastConfidentUnmatchedSlot();
        }
        setBlobToTouch(slot, x, y, depth);
    }
}

cTouch* touchManager::nearestUnmatchedSlot(float x, float y, float z) {
    cTouch* nearest = nullptr;
    float best = std::numeric_limits<float>::max();
    for (cTouch& slot : touchSlots) {
        if (slot.confidence < -1 || slot.matched) {
            continue;
        }
        const float distance = slot.getDistanceTo(x, y, z);
        if (distance < best) {
            best = distance;
            nearest = &slot;
        }
    }
    return nearest;
}

cTouch* touchManager::leastConfidentUnmatchedSlot() {
    cTouch* least = nullptr;
    int best = std::numeric_limits<int>::max();
    for (cTouch& slot : touchSlots) {
        if (!slot.matched && slot.confidence < best) {
            best = slot.confidence;
            least = &slot;
        }
    }
    return least;
}

void touchManager::setBlobToTouch(cTouch* slot, float x, float y, float z) {
    if (slot == nullptr) {
        Logger::Log("ERROR: Was not able to assign a touch to a detected finger blob!!");
        return;
    }
    slot->setCurrentPosition(x, y, z);
    if (slot->confidence < confidenceThreshold) {
        constexpr int most = std::numeric_limits<int>::max();
        slot->confidence = slot->confidence > most - 2 ? most : slot->confidence + 2;
    }
    slot->matched = true;
}

bool touchManager::clipTest(cTouch& touch) {
    Vector3 position;
    touch.getLerpedPos(position);
    return !(position.x < borderClipLeft || position.x > borderClipRight ||
             position.y < borderClipTop || position.y > borderClipBottom);
}

bool touchManager::reportedPosition(cTouch& touch, Vector3& position) {
    if (touch.confidence < confidenceThreshold || !clipTest(touch)) {
        position = noPosition;
        return false;
    }
    touch.getLerpedPos(position);
    if (outputCalibratedTouches) {
        calibrateTouch(position);
    }
    return true;
}

void touchManager::prepareTouchCollection() {
    auto next = touchData.begin();
    for (cTouch& slot : touchSlots) {
        Vector3 position;
        reportedPosition(slot, position);
        *next++ = position.x;
        *next++ = position.y;
        *next++ = position.z;
    }
    touchDataIndex = 0;
}

double touchManager::getTouchData() {
    return touchDataIndex < touchData.size() ? touchData[touchDataIndex++] : -9999.0;
}

void touchManager::getTouches(const NetworkTouch** out) {
    for (std::size_t i = 0; i < touchSlots.size(); ++i) {
        Vector3 position;
        const bool reported = reportedPosition(touchSlots[i], position);
        networkTouches[i] = {reported ? 1 : 0, position.x, position.y, position.z};
    }
    *out = networkTouches.get();
}

void touchManager::getAveragePos(Vector3& out) {
    Vector3 sum;
    int count = 0;
    for (cTouch& slot : touchSlots) {
        if (slot.confidence >= confidenceThreshold) {
            Vector3 position;
            slot.getLerpedPos(position);
            sum.x += position.x;
            sum.y += position.y;
            sum.z += position.z;
            count += 1;
        }
    }
    out = {sum.x / count, sum.y / count, sum.z / count};
}

void touchManager::loadSettings(json11::Json& calibration, int xRes, int yRes) {
    const SettingsSection section = SettingsSection(calibration).section("touchDetection");
    const SettingsSection margins = section.section("forwardFacing");
    readField(section, "confidenceThreshold", confidenceThreshold, {0.0});
    readField(margins, "borderClipTop", borderClipTop);
    readField(margins, "borderClipBottom", borderClipBottom);
    readField(margins, "borderClipLeft", borderClipLeft);
    readField(margins, "borderClipRight", borderClipRight);
    borderClipRight = boundFromMargin(xRes, borderClipRight);
    borderClipBottom = boundFromMargin(yRes, borderClipBottom);
    tellEmptyBounds(margins, "borderClipRight", borderClipLeft, borderClipRight);
    tellEmptyBounds(margins, "borderClipBottom", borderClipTop, borderClipBottom);
}

std::string touchManager::getVariableReadout() {
    std::string text = "\n//////touchMgr:\n";
    const auto line = [&text](const char* label, int value) {
        text += label + std::to_string(value) + "\n";
    };
    line("confidenceThreshold: ", confidenceThreshold);
    line("borderClipTop: ", borderClipTop);
    line("borderClipBottom: ", borderClipBottom);
    line("borderClipLeft: ", borderClipLeft);
    line("borderClipRight: ", borderClipRight);
    return text;
}

} // namespace QVR
