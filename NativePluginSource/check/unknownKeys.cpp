#include "check/unknownKeys.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <limits>
#include <numeric>
#include <tuple>

namespace QVR {

namespace {

struct SplitKey {
    std::string parent;
    std::string name;
};

SplitKey split(const std::string& key) {
    const std::size_t dot = key.rfind('.');
    return dot == std::string::npos ? SplitKey{"", key}
                                    : SplitKey{key.substr(0, dot), key.substr(dot + 1)};
}

bool isSameLetter(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
}

// How many letters have to be put in, taken out or replaced to make the one of the other, upper
// and lower case being the same.
std::size_t editDistance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t replaced = diagonal + (isSameLetter(from[i], to[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

// Names no longer than this are compared in full: a document may hold anything.
constexpr std::size_t longestName = 100;

// The nearest name; among equally near ones that in the same object.
std::string nearestKey(const std::string& key, const std::set<std::string>& known) {
    const auto [parent, name] = split(key);
    const std::string start = name.substr(0, longestName);
    std::tuple best{std::numeric_limits<std::size_t>::max(), true, std::string()};
    for (const std::string& candidate : known) {
        const auto [otherParent, otherName] = split(candidate);
        best = std::min(best, {editDistance(start, otherName), otherParent != parent, candidate});
    }
    return std::get<std::string>(best);
}

void collect(const json11::Json& value, const std::string& path, const std::set<std::string>& known,
             std::vector<UnknownKey>& unknown) {
    for (const auto& [name, member] : value.object_items()) {
        const std::string key = path.empty() ? name : path + '.' + name;
        if (known.contains(key)) {
            collect(member, key, known, unknown);
        } else {
            unknown.push_back({key, nearestKey(key, known)});
        }
    }
}

} // namespace

std::vector<UnknownKey> unknownKeys(const json11::Json& document,
                                    const std::set<std::string>& known) {
    std::vector<UnknownKey> unknown;
    collect(document, "", known, unknown);
    return unknown;
}

} // namespace QVR
