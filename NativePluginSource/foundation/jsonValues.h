// Typed reads of JSON values with a fallback, the one rule of every settings document: a value of
// the expected type counts, anything else (missing, other type) leaves the fallback.
#pragma once

namespace json11 {
class Json;
}

namespace QVR {

// The number, or `fallback` when `value` is no JSON number.
double numberValue(const json11::Json& value, double fallback);

// The number truncated toward zero (see truncateToInt), or `fallback` when it is no JSON number.
int intValue(const json11::Json& value, int fallback);

// The truth value, or `fallback` when `value` is no JSON boolean.
bool boolValue(const json11::Json& value, bool fallback);

} // namespace QVR
