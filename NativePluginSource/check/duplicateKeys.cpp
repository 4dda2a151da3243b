#include "check/duplicateKeys.h"

#include <set>

#include <nlohmann/json.hpp>

namespace QVR {

namespace {

struct OpenObject {
    std::string path;
    std::set<std::string> keys;
};

} // namespace

std::vector<std::string> duplicateKeys(const std::string& text) {
    using Event = nlohmann::json::parse_event_t;
    std::vector<OpenObject> open;
    std::string key; // the last one, with the objects around it; those of a list's items, too
    std::set<std::string> named;
    std::vector<std::string> repeated;
    const auto follow = [&](int, Event event, const nlohmann::json& value) {
        if (event == Event::object_start) {
            open.push_back({key, {}});
        } else if (event == Event::object_end) {
            key = open.back().path;
            open.pop_back();
        } else if (event == Event::key) {
            OpenObject& object = open.back();
            const auto name = value.get<std::string>();
            key = object.path.empty() ? name : object.path + '.' + name;
            if (!object.keys.insert(name).second && named.insert(key).second) {
                repeated.push_back(key);
            }
        }
        return true;
    };
    constexpr bool throwing = false;
    [[maybe_unused]] const auto parsed = nlohmann::json::parse(text, follow, throwing);
    return repeated;
}

} // namespace QVR
