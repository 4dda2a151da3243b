// Reading of one whole-number setting of the calibration document into a field.
#pragma once

#include "foundation/Logger.h"
#include "foundation/SettingsSection.h"

#include <string>

namespace QVR {

// The value of `key` truncated into the field's type, of which it keeps the low bits; without a
// number a warning, and the field stays.
template <typename Field>
void readField(const SettingsSection& section, const char* key, Field& field,
               SettingRange sensible = {}) {
    if (section.hasNumber(key, std::to_string(field))) {
        field = section.whole(key, field, sensible);
    } else {
        Logger::Log(std::string("Warning: Did not find ") + key + " value in calibration data.");
    }
}

} // namespace QVR
