// Keys of a document that nobody reads.
#pragma once

#include <set>
#include <string>
#include <vector>

#include <json11.hpp>

namespace QVR {

struct UnknownKey {
    std::string key;     // with the objects around it, as are all keys here
    std::string nearest; // what it may have been meant for; "" when nothing is read at all
};

// The keys of `document` that are not among `known`. What lies below an unknown one is left out.
std::vector<UnknownKey> unknownKeys(const json11::Json& document,
                                    const std::set<std::string>& known);

} // namespace QVR
