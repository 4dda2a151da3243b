// One object of a settings document, read by key: a value of the expected type counts, anything
// else (missing, other type) leaves the fallback.
//
// Every read tells the SettingsListener, if there is one, what it came to. A value that is not
// there is told only by hasNumber and neededSection: most settings may be left out.
#pragma once

#include "foundation/jsonValues.h"

#include <limits>
#include <string>
#include <utility>

#include <json11.hpp>

namespace QVR {

// The values that make sense. Others are told, and used all the same.
struct SettingRange {
    double least = -std::numeric_limits<double>::infinity();
    double most = std::numeric_limits<double>::infinity();
};

class SettingsSection {
  public:
    // The whole document, which must outlive the section.
    explicit SettingsSection(const json11::Json& document);

    // The object under `key`; one without any key when there is none. For a needed one that is
    // told: `otherwise` says what then happens.
    SettingsSection section(const std::string& key) const;
    SettingsSection neededSection(const std::string& key, const std::string& otherwise) const;

    bool isThere() const { return value_.is_object(); }

    // Whether a number is under `key`. Told when there is none: `otherwise` says what then
    // happens.
    bool hasNumber(const std::string& key, const std::string& otherwise) const;

    double number(const std::string& key, double fallback, SettingRange sensible = {}) const;

    // The number truncated toward zero (see intValue), of which `Whole` keeps the low bits.
    template <typename Whole>
    Whole whole(const std::string& key, Whole fallback, SettingRange sensible = {}) const {
        const json11::Json& value = ask(key);
        const Whole used = value.is_number() ? static_cast<Whole>(intValue(value, 0)) : fallback;
        tellNumber(key, value, static_cast<double>(used), sensible);
        return used;
    }

    bool truth(const std::string& key, bool fallback) const;

    // A truth value, or whether a number is above 0.
    bool isOn(const std::string& key, bool fallback) const;

    // The text under `key`; "" for anything else, which is told.
    std::string text(const std::string& key) const;

    // The items under `key`, of which all that is no number counts as 0; empty when it is no
    // array.
    const json11::Json::array& numbers(const std::string& key) const;

    // Tells that what is under `key` comes to something that a person should know.
    void tell(const std::string& key, const std::string& found, const std::string& used) const;

    // A number as a person writes it.
    static std::string textOf(double number);

  private:
    SettingsSection(const json11::Json& value, std::string path)
        : value_(value), path_(std::move(path)) {}

    std::string pathOf(const std::string& key) const;
    const json11::Json& ask(const std::string& key) const;
    std::string described(const std::string& key) const;
    void tellNumber(const std::string& key, const json11::Json& value, double used,
                    SettingRange sensible) const;

    const json11::Json& value_;
    std::string path_; // of the keys that lead here; "" for the document itself
};

} // namespace QVR
