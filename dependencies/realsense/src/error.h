// The error object of the C interface, and the wrapper that turns an exception into one.
#pragma once

#include "enum_names.h"

#include <exception>
#include <sstream>
#include <string>

#include <librealsense/rs.h>

struct rs_error {
    std::string message;
    const char* function; // static text: outlives the error
    std::string arguments;
};

namespace camera {

// An argument of a C function under the name that error texts show.
template <class Value>
struct Argument {
    const char* name;
    const Value& value;
};

template <class Value>
Argument<Value> argument(const char* name, const Value& value) {
    return {name, value};
}

inline std::string argumentText(const void* pointer) {
    if (!pointer) {
        return "0";
    }
    std::ostringstream text;
    text << pointer;
    return text.str();
}

inline std::string argumentText(const char* text) {
    return text ? text : "0";
}

template <class Value>
std::string argumentText(const Value& value) {
    if constexpr (std::is_pointer_v<Value>) {
        return argumentText(static_cast<const void*>(value));
    } else if constexpr (std::is_enum_v<Value>) {
        return nameOf(value);
    } else {
        std::ostringstream text;
        text << value;
        return text.str();
    }
}

// "name:value" pairs joined by a comma and a blank.
template <class... Values>
std::string argumentList(const Argument<Values>&... arguments) {
    std::string list;
    ((list += (list.empty() ? "" : ", ") + std::string(arguments.name) + ":" +
              argumentText(arguments.value)),
     ...);
    return list;
}

// Stores a new error in the slot, unless the caller ignores errors.
void report(rs_error** slot, const char* function, std::string arguments, const char* message);

// Runs `body` and gives its result; an exception goes into the slot and gives `onError`.
template <class Result, class Body, class... Values>
Result guarded(rs_error** slot, const char* function, Result onError, Body&& body,
               const Argument<Values>&... arguments) {
    try {
        return body();
    } catch (const std::exception& problem) {
        report(slot, function, argumentList(arguments...), problem.what());
    } catch (...) {
        report(slot, function, argumentList(arguments...), "unknown failure");
    }
    return onError;
}

// The same for functions without a result.
template <class Body, class... Values>
void guardedCall(rs_error** slot, const char* function, Body&& body,
                 const Argument<Values>&... arguments) {
    guarded(
        slot, function, false,
        [&] {
            body();
            return true;
        },
        arguments...);
}

// The checks that C functions make before anything else; each throws std::runtime_error.
void requirePointer(const void* pointer, const char* name);
void requireNotNegative(int value, const char* name);
void requireCode(int code, int count, const char* name);

} // namespace camera
