#include "check/SettingsCheck.h"

#include "check/duplicateKeys.h"
#include "check/unknownKeys.h"
#include "foundation/Logger.h"
#include "foundation/utils.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include <json11.hpp>
#include <unistd.h>

namespace QVR {

namespace {

// No log message while it lives.
class Silence {
  public:
    Silence() {
        Logger::RegisterDebugCallback([](const char*) {});
    }
    ~Silence() { Logger::RegisterDebugCallback(before_); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

  private:
    void (*before_)(const char*) = Logger::logCallback;
};

} // namespace

SettingsCheck::SettingsCheck(std::string folder, Role role, Report report)
    : folder_(std::move(folder)), role_(role), report_(std::move(report)) {}

int SettingsCheck::run() {
    const Silence silence;
    count_ = 0;
    for (const SettingsDocument& document : settingsDocuments(role_)) {
        check(document);
    }
    line(folder_ + ": " +
         (count_ == 0
              ? "nothing to mend"
              : std::to_string(count_) + (count_ == 1 ? " setting" : " settings") + " to mend"));
    return count_;
}

void SettingsCheck::check(const SettingsDocument& document) {
    file_ = document.path;
    asked_.clear();
    told_.clear();
    const std::string path = folder_ + '/' + document.path;
    const bool isThere = access(path.c_str(), F_OK) == 0;
    if (!document.ownReader) {
        if (isThere) {
            note(role_ == Role::host ? "read by the server only" : "read by hosts only");
        }
        return;
    }
    const std::string text = utils::readFileContent(path);
    if (text.empty()) {
        tellMissing(document, isThere);
    } else {
        checkText(document, text);
    }
}

void SettingsCheck::tellMissing(const SettingsDocument& document, bool isThere) {
    const std::string elsewhere = utils::findFilePath(document.path);
    const std::string used = access(elsewhere.c_str(), R_OK) == 0 ? elsewhere : document.ifMissing;
    if (isThere) {
        found({"", "a file that is empty or cannot be read", used});
    } else if (document.isNeeded) {
        found({"", "no such file", used});
    } else {
        note("found no such file, using " + used);
    }
}

void SettingsCheck::checkText(const SettingsDocument& document, const std::string& text) {
    const std::string none = "noError";
    std::string error = none;
    const json11::Json parsed = json11::Json::parse(text, error);
    if (error != none) {
        found({"", "no JSON, " + error, document.ifBroken});
        return;
    }
    for (const std::string& key : duplicateKeys(text)) {
        found({key, "more than one value", "the last one"});
    }
    const ListeningToSettings listening(*this);
    document.ownReader(text);
    const std::set<std::string> own = asked_;
    if (document.otherReader) {
        otherRole_ = true;
        document.otherReader(text);
        otherRole_ = false;
    }
    tellUnknownKeys(parsed, asked_);
    tellForeignKeys(parsed, own);
}

void SettingsCheck::tellUnknownKeys(const json11::Json& document,
                                    const std::set<std::string>& known) {
    for (const UnknownKey& unknown : unknownKeys(document, known)) {
        found({unknown.key,
               "a key that is not known" +
                   (unknown.nearest.empty() ? "" : "; the nearest is " + unknown.nearest),
               "nothing of it"});
    }
}

void SettingsCheck::tellForeignKeys(const json11::Json& document,
                                    const std::set<std::string>& own) {
    std::string foreign;
    for (const auto& [key, value] : document.object_items()) {
        if (asked_.contains(key) && !own.contains(key)) {
            foreign += (foreign.empty() ? "" : ", ") + key;
        }
    }
    if (!foreign.empty()) {
        note("read by " + std::string(role_ == Role::host ? "the server" : "hosts") +
             " only: " + foreign);
    }
}

void SettingsCheck::asked(const std::string& key) {
    asked_.insert(key);
}

void SettingsCheck::found(const SettingsFinding& finding) {
    const std::string text = (finding.key.empty() ? "" : finding.key + ": ") + "found " +
                             finding.found + ", using " + finding.used;
    // Several parts of the pipeline may read the same value.
    if (!otherRole_ && told_.insert(text).second) {
        ++count_;
        line(file_ + ": " + text);
    }
}

void SettingsCheck::note(const std::string& text) {
    line(file_ + ": note: " + text);
}

// A document may hold anything, and lines are for terminals.
void SettingsCheck::line(std::string text) {
    std::replace_if(
        text.begin(), text.end(),
        [](char letter) { return std::iscntrl(static_cast<unsigned char>(letter)) != 0; }, '?');
    report_(text);
}

} // namespace QVR
