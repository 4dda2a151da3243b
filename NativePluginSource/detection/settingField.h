// Reading of one whole-number setting of the calibration document into a field.
#pragma once

#include "foundation/Logger.h"
#include "foundation/jsonValues.h"

#include <string>

#include <json11.hpp>

namespace QVR {

// The value of `key` truncated into the field's type, of which it keeps the low bits; without a
// number a warning, and the field stays.
template <typename Field>
void readField(const json11::Json& section, const char* key, Field& field) {
    const json11::Json& value = section[key];
    if (value.is_number()) {
        field = static_cast<Field>(intValue(value, 0));
    } else {
        Logger::Log(std::string("Warning: Did not find ") + key + " value in calibration data.");
    }
}

} // namespace QVR
