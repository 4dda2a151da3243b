// Any text as JSON. What is read and written again is the same value.
#include "fuzzing.h"

#include <json11.hpp>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string error;
    const json11::Json value =
        json11::Json::parse(std::string(reinterpret_cast<const char*>(data), size), error);
    if (!error.empty()) {
        fuzzing::require(value.is_null(), "what cannot be read is null");
        return 0;
    }
    const json11::Json again = json11::Json::parse(value.dump(), error);
    fuzzing::require(error.empty(), "what is written can be read");
    fuzzing::require(again == value, "what is written is the value");
    return 0;
}
