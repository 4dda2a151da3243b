// The part of a camera URI behind its scheme, for the source that it chooses.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace camera {

// An image size as written in a URI, such as 640x480.
struct ImageSize {
    int width = 0;
    int height = 0;

    bool operator==(const ImageSize&) const = default;
};

// Positional text and key=value pairs in the order written. Every getter gives the fallback when
// the key is absent and throws std::runtime_error, naming source, key, value and what is
// accepted, when the value does not fit.
class SourceOptions {
  public:
    using Values = std::vector<std::pair<std::string, std::string>>;

    SourceOptions(std::string scheme, std::string positional, Values values);

    const std::string& scheme() const { return scheme_; }
    // The text before the first key, such as a folder or a serial number; "" when there is none.
    const std::string& positional() const { return positional_; }
    const Values& values() const { return values_; }
    bool has(std::string_view key) const { return find(key) != nullptr; }

    std::string text(std::string_view key, std::string_view fallback) const;
    // One of `accepted`.
    std::string choice(std::string_view key, std::string_view fallback,
                       std::initializer_list<std::string_view> accepted) const;
    // A whole number from `least` to `most`.
    int integer(std::string_view key, int fallback, int least, int most) const;
    std::uint64_t seed(std::string_view key, std::uint64_t fallback) const;
    // A finite number from `least` to `most`, in plain or exponent form.
    double number(std::string_view key, double fallback, double least, double most) const;
    // "on" or "off".
    bool onOff(std::string_view key, bool fallback) const;
    // WIDTHxHEIGHT, each from 1 to 16384.
    ImageSize size(std::string_view key, ImageSize fallback) const;

    // Throws unless every key is one of `accepted` and none is written twice.
    void acceptOnly(std::initializer_list<std::string_view> accepted) const;
    // Throws when there is positional text, for sources that have no use for it.
    void acceptNoPositional() const;

  private:
    const std::string* find(std::string_view key) const;
    [[noreturn]] void reject(std::string_view key, const std::string& accepted) const;

    std::string scheme_;
    std::string positional_;
    Values values_;
};

} // namespace camera
