#include "foundation/jsonValues.h"

#include "foundation/numbers.h"

#include <json11.hpp>

namespace QVR {

double numberValue(const json11::Json& value, double fallback) {
    return value.is_number() ? value.number_value() : fallback;
}

int intValue(const json11::Json& value, int fallback) {
    return value.is_number() ? truncateToInt(value.number_value()) : fallback;
}

bool boolValue(const json11::Json& value, bool fallback) {
    return value.is_bool() ? value.bool_value() : fallback;
}

} // namespace QVR
