// The C interface as C++ sees it, without any other header of ours.
#include "client/plugin.h"

#include <type_traits>

static_assert(std::is_same_v<decltype(&update), int (*)()>);
static_assert(std::is_same_v<decltype(&setCalibrationAsString), int (*)(std::string)>);
