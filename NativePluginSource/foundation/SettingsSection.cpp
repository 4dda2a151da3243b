#include "foundation/SettingsSection.h"

#include "foundation/SettingsListener.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace QVR {

namespace {

constexpr std::size_t longestQuote = 40;

std::string quoted(const std::string& text) {
    return '"' + text.substr(0, longestQuote) + (text.size() > longestQuote ? "...\"" : "\"");
}

std::string describe(const json11::Json& value) {
    switch (value.type()) {
    case json11::Json::NUMBER:
        return SettingsSection::textOf(value.number_value());
    case json11::Json::BOOL:
        return value.bool_value() ? "true" : "false";
    case json11::Json::STRING:
        return quoted(value.string_value());
    case json11::Json::ARRAY:
        return "a list";
    case json11::Json::OBJECT:
        return "an object";
    case json11::Json::NUL:
        break;
    }
    return "null";
}

} // namespace

SettingsSection::SettingsSection(const json11::Json& document) : value_(document) {
    if (!document.is_object()) {
        tell("", describe(document), "none of its settings");
    }
}

SettingsSection SettingsSection::section(const std::string& key) const {
    const json11::Json& value = ask(key);
    if (!value.is_object() && value_.object_items().contains(key)) {
        tell(key, describe(value), "none of its settings");
    }
    return {value, pathOf(key)};
}

SettingsSection SettingsSection::neededSection(const std::string& key,
                                               const std::string& otherwise) const {
    const json11::Json& value = ask(key);
    if (!value.is_object()) {
        tell(key, described(key), otherwise);
    }
    return {value, pathOf(key)};
}

bool SettingsSection::hasNumber(const std::string& key, const std::string& otherwise) const {
    const bool number = ask(key).is_number();
    if (!number) {
        tell(key, described(key), otherwise);
    }
    return number;
}

double SettingsSection::number(const std::string& key, double fallback,
                               SettingRange sensible) const {
    const json11::Json& value = ask(key);
    const double used = numberValue(value, fallback);
    tellNumber(key, value, used, sensible);
    return used;
}

bool SettingsSection::truth(const std::string& key, bool fallback) const {
    const json11::Json& value = ask(key);
    if (!value.is_bool() && value_.object_items().contains(key)) {
        tell(key, describe(value), fallback ? "true" : "false");
    }
    return boolValue(value, fallback);
}

bool SettingsSection::isOn(const std::string& key, bool fallback) const {
    const json11::Json& value = ask(key);
    return value.is_number() ? intValue(value, 0) > 0 : truth(key, fallback);
}

std::string SettingsSection::text(const std::string& key) const {
    const json11::Json& value = ask(key);
    if (value.string_value().empty()) {
        tell(key, described(key), "an empty text");
    }
    return value.string_value();
}

const json11::Json::array& SettingsSection::numbers(const std::string& key) const {
    const json11::Json& value = ask(key);
    const json11::Json::array& items = value.array_items();
    if (SettingsListener::current() == nullptr) {
        return items;
    }
    const auto others = std::count_if(items.begin(), items.end(),
                                      [](const json11::Json& item) { return !item.is_number(); });
    if (others > 0) {
        tell(key, std::to_string(others) + " items that are no numbers", "0 for each");
    } else if (!value.is_array() && value_.object_items().contains(key)) {
        tell(key, describe(value), "an empty list");
    }
    return items;
}

void SettingsSection::tell(const std::string& key, const std::string& found,
                           const std::string& used) const {
    if (SettingsListener* const listener = SettingsListener::current()) {
        listener->found({pathOf(key), found, used});
    }
}

std::string SettingsSection::textOf(double number) {
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%.15g", number);
    return text.data();
}

std::string SettingsSection::pathOf(const std::string& key) const {
    return path_.empty() || key.empty() ? path_ + key : path_ + '.' + key;
}

const json11::Json& SettingsSection::ask(const std::string& key) const {
    if (SettingsListener* const listener = SettingsListener::current()) {
        listener->asked(pathOf(key));
    }
    return value_[key];
}

std::string SettingsSection::described(const std::string& key) const {
    const auto& members = value_.object_items();
    const auto found = members.find(key);
    return found == members.end() ? "nothing" : describe(found->second);
}

void SettingsSection::tellNumber(const std::string& key, const json11::Json& value, double used,
                                 SettingRange sensible) const {
    if (!value.is_number()) {
        if (value_.object_items().contains(key)) {
            tell(key, describe(value), textOf(used));
        }
        return;
    }
    const double number = value.number_value();
    if (number < sensible.least || number > sensible.most) {
        const std::string range =
            sensible.most == std::numeric_limits<double>::infinity()
                ? "less than " + textOf(sensible.least)
                : "not from " + textOf(sensible.least) + " to " + textOf(sensible.most);
        tell(key, textOf(number) + ", which is " + range, textOf(used));
    } else if (number != used) {
        tell(key, textOf(number), textOf(used));
    }
}

} // namespace QVR
