// The names that error texts use for the codes of the C interface.
#pragma once

#include <string>

#include <librealsense/rs.h>

namespace camera {

// Upper case without the prefix, such as DEPTH; the number for a code without a declared name.
std::string nameOf(rs_stream stream);
std::string nameOf(rs_format format);
std::string nameOf(rs_source source);
std::string nameOf(rs_option option);

} // namespace camera
