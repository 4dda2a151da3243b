// Calls of the camera library whose errors are exceptions.
#pragma once

#include <type_traits>

#include <librealsense/rs.hpp>

namespace programs {

// Calls a function of the camera library; what it complains of becomes an rs::error.
template <typename Function, typename... Arguments>
auto cameraCall(Function function, Arguments... arguments) {
    rs_error* error = nullptr;
    if constexpr (std::is_void_v<std::invoke_result_t<Function, Arguments..., rs_error**>>) {
        function(arguments..., &error);
        rs::error::handle(error);
    } else {
        const auto result = function(arguments..., &error);
        rs::error::handle(error);
        return result;
    }
}

} // namespace programs
