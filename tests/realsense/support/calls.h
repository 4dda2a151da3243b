// Calls of the C interface: with an error as an exception, or with the error as the result.
#pragma once

#include "context.h"
#include "enum_names.h"
#include "stream_device.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include <librealsense/camera_source.h>
#include <librealsense/rs.hpp>

namespace camera_test {

// The result of a call that is expected to work; throws rs::error when it does not.
template <class Function, class... Arguments>
auto call(Function function, Arguments... arguments) {
    rs_error* error = nullptr;
    if constexpr (std::is_void_v<decltype(function(arguments..., &error))>) {
        function(arguments..., &error);
        rs::error::handle(error);
    } else {
        const auto result = function(arguments..., &error);
        rs::error::handle(error);
        return result;
    }
}

struct Failure {
    std::string function;
    std::string arguments;
    std::string message;
};

// What a call that is expected to fail reports; empty texts when it works.
template <class Function, class... Arguments>
Failure failure(Function function, Arguments... arguments) {
    try {
        call(function, arguments...);
    } catch (const rs::error& error) {
        return {error.get_failed_function(), error.get_failed_args(), error.what()};
    }
    return {};
}

template <class Function, class... Arguments>
std::string messageOf(Function function, Arguments... arguments) {
    return failure(function, arguments...).message;
}

inline std::string pointerText(const void* pointer) {
    std::ostringstream text;
    text << std::hex << "0x" << reinterpret_cast<std::uintptr_t>(pointer);
    return text.str();
}

inline void enable(rs_device* device, rs_stream stream, int width = 0, int height = 0,
                   rs_format format = RS_FORMAT_ANY, int framerate = 0,
                   rs_output_buffer_format output = RS_OUTPUT_BUFFER_FORMAT_CONTINUOUS) {
    call(rs_enable_stream_ex, device, stream, width, height, format, framerate, output);
}

// Makes contexts hold one device over `source` until the test is over.
inline void selectSource(std::function<std::unique_ptr<camera::FrameSource>()> source,
                         camera::Clock& clock = camera::steadyClock()) {
    camera::setEnumeration([source = std::move(source), &clock] {
        std::vector<std::unique_ptr<camera::Device>> devices;
        devices.push_back(std::make_unique<camera::StreamDevice>(source(), clock));
        return devices;
    });
}

} // namespace camera_test
