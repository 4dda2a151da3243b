#include "macos/bundle/Transcript.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <string_view>
#include <utility>

namespace {

Transcript* current = nullptr;

} // namespace

Transcript::Transcript(const Plugin& plugin) : plugin_(plugin) {
    current = this;
    plugin_.c().registerDebugCallback(receive);
}

Transcript::~Transcript() {
    plugin_.c().registerDebugCallback(nullptr);
    current = nullptr;
}

void Transcript::receive(const char* message) {
    current->append(std::string("says: ") + message);
}

void Transcript::add(const std::string& question, int answer) {
    append(question + " " + std::to_string(answer));
}

void Transcript::add(const std::string& question, float answer) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), " %a", static_cast<double>(answer));
    append(question + text.data());
}

void Transcript::add(const std::string& question, const std::string& answer) {
    append(question + " " + answer);
}

void Transcript::addBytes(const std::string& question, const void* bytes, std::size_t size) {
    const std::string_view view(static_cast<const char*>(bytes), size);
    append(question + " " + std::to_string(size) + " bytes, hash " +
           std::to_string(std::hash<std::string_view>()(view)));
}

void Transcript::replace(const std::string& text, const std::string& replacement) {
    replacements_[text] = replacement;
}

long Transcript::count(const std::string& line) const {
    return std::count(lines_.begin(), lines_.end(), line);
}

void Transcript::append(std::string line) {
    for (const auto& [text, replacement] : replacements_) {
        for (std::size_t place = line.find(text); place != std::string::npos;
             place = line.find(text, place + replacement.size())) {
            line.replace(place, text.size(), replacement);
        }
    }
    lines_.push_back(std::move(line));
}
