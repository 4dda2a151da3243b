// How many steps the plain form did in this program, called by the product itself or by a vector
// form that handed its work over. The linker puts our counting functions in front of it.
#pragma once

#include <cstddef>

namespace literal {

std::size_t plainMarks();
std::size_t plainCuts();
std::size_t plainRuns();
std::size_t plainSums();

} // namespace literal
