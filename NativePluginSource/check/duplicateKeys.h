// Keys that a document gives more than once, which its parsed form no longer shows.
#pragma once

#include <string>
#include <vector>

namespace QVR {

// The keys with the objects around them ("streaming.fps"), once each, in the order in which their
// repetition is met. `text` is valid JSON.
std::vector<std::string> duplicateKeys(const std::string& text);

} // namespace QVR
