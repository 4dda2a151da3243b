#include "error.h"

#include <stdexcept>
#include <utility>

namespace camera {

void report(rs_error** slot, const char* function, std::string arguments, const char* message) {
    if (slot) {
        *slot = new rs_error{message, function, std::move(arguments)};
    }
}

void requirePointer(const void* pointer, const char* name) {
    if (!pointer) {
        throw std::runtime_error(std::string("argument ") + name + " is null");
    }
}

void requireNotNegative(int value, const char* name) {
    if (value < 0) {
        throw std::runtime_error(std::string("argument ") + name + " is negative");
    }
}

void requireCode(int code, int count, const char* name) {
    if (code < 0 || code >= count) {
        throw std::runtime_error(std::string("argument ") + name +
                                 " is not a known code: " + std::to_string(code));
    }
}

} // namespace camera
