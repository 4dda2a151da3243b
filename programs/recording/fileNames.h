// What is called what in the folder of a recording.
#pragma once

#include <cstdint>
#include <string>

namespace recording {

constexpr const char* descriptionFile = "recording.json";
constexpr const char* linesFile = "frames.jsonl";

// Eight digits, so that the order of names is the order of frames.
std::string depthFile(std::uint32_t picture);
std::string colorFile(std::uint32_t picture);

} // namespace recording
