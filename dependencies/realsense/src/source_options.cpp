#include "source_options.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <locale>
#include <optional>
#include <sstream>
#include <stdexcept>

namespace camera {
namespace {

constexpr int longestSide = 16384;

std::string joined(std::initializer_list<std::string_view> words) {
    std::string result;
    for (std::string_view word : words) {
        result += (result.empty() ? "" : ", ") + std::string(word);
    }
    return result;
}

// The whole of `text` as a decimal whole number.
template <class Integer>
std::optional<Integer> wholeNumber(std::string_view text) {
    Integer value{};
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end) {
        return std::nullopt;
    }
    return value;
}

// The whole of `text` as a number; independent of the user's locale, where a comma may be the
// decimal sign.
std::optional<double> decimalNumber(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    double value = 0.0;
    stream >> std::noskipws >> value;
    if (stream.fail() || stream.peek() != std::istringstream::traits_type::eof()) {
        return std::nullopt;
    }
    return value;
}

std::string plain(double value) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << value;
    return stream.str();
}

} // namespace

SourceOptions::SourceOptions(std::string scheme, std::string positional, Values values)
    : scheme_(std::move(scheme)), positional_(std::move(positional)), values_(std::move(values)) {}

std::string SourceOptions::text(std::string_view key, std::string_view fallback) const {
    const std::string* given = find(key);
    return given ? *given : std::string(fallback);
}

std::string SourceOptions::choice(std::string_view key, std::string_view fallback,
                                  std::initializer_list<std::string_view> accepted) const {
    const std::string value = text(key, fallback);
    if (has(key) && std::find(accepted.begin(), accepted.end(), value) == accepted.end()) {
        reject(key, "one of " + joined(accepted));
    }
    return value;
}

int SourceOptions::integer(std::string_view key, int fallback, int least, int most) const {
    const std::string* given = find(key);
    if (!given) {
        return fallback;
    }
    const auto value = wholeNumber<int>(*given);
    if (!value || *value < least || *value > most) {
        reject(key, "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return *value;
}

std::uint64_t SourceOptions::seed(std::string_view key, std::uint64_t fallback) const {
    const std::string* given = find(key);
    if (!given) {
        return fallback;
    }
    const auto value = wholeNumber<std::uint64_t>(*given);
    if (!value) {
        reject(key, "a whole number from 0 to 18446744073709551615");
    }
    return *value;
}

double SourceOptions::number(std::string_view key, double fallback, double least,
                             double most) const {
    const std::string* given = find(key);
    if (!given) {
        return fallback;
    }
    const auto value = decimalNumber(*given);
    if (!value || !std::isfinite(*value) || *value < least || *value > most) {
        reject(key, "a number from " + plain(least) + " to " + plain(most));
    }
    return *value;
}

bool SourceOptions::onOff(std::string_view key, bool fallback) const {
    return choice(key, fallback ? "on" : "off", {"on", "off"}) == "on";
}

ImageSize SourceOptions::size(std::string_view key, ImageSize fallback) const {
    const std::string* given = find(key);
    if (!given) {
        return fallback;
    }
    const std::string_view value = *given;
    const std::size_t cross = value.find('x');
    if (cross != std::string_view::npos) {
        const auto width = wholeNumber<int>(value.substr(0, cross));
        const auto height = wholeNumber<int>(value.substr(cross + 1));
        if (width && height && *width >= 1 && *height >= 1 && *width <= longestSide &&
            *height <= longestSide) {
            return {*width, *height};
        }
    }
    reject(key, "a size such as 640x480, no side longer than " + std::to_string(longestSide));
}

void SourceOptions::acceptOnly(std::initializer_list<std::string_view> accepted) const {
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const std::string& key = values_[i].first;
        if (std::find(accepted.begin(), accepted.end(), key) == accepted.end()) {
            throw std::runtime_error("camera source \"" + scheme_ + "\" has no key \"" + key +
                                     "\"; accepted: " + joined(accepted));
        }
        const auto sameKey = [&](const auto& pair) { return pair.first == key; };
        const auto rest = values_.begin() + static_cast<std::ptrdiff_t>(i) + 1;
        if (std::any_of(rest, values_.end(), sameKey)) {
            throw std::runtime_error("camera source \"" + scheme_ + "\": key \"" + key +
                                     "\" is written twice");
        }
    }
}

void SourceOptions::acceptNoPositional() const {
    if (!positional_.empty()) {
        throw std::runtime_error("camera source \"" + scheme_ +
                                 "\" takes key=value pairs only, \"" + positional_ + "\" is none");
    }
}

const std::string* SourceOptions::find(std::string_view key) const {
    for (const auto& [name, value] : values_) {
        if (name == key) {
            return &value;
        }
    }
    return nullptr;
}

void SourceOptions::reject(std::string_view key, const std::string& accepted) const {
    throw std::runtime_error("camera source \"" + scheme_ + "\": key \"" + std::string(key) +
                             "\" cannot be \"" + *find(key) + "\"; accepted: " + accepted);
}

} // namespace camera
