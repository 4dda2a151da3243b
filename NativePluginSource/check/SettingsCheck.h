// Reads the settings documents of a folder as the pipeline would and says what a person should
// mend, before anything is started with them.
#pragma once

#include "check/settingsDocuments.h"
#include "foundation/SettingsListener.h"

#include <functional>
#include <set>
#include <string>

namespace json11 {
class Json;
}

namespace QVR {

// Nothing is opened, connected to or changed but the log, which is silent for the time of the
// check: the findings say the same with file and key.
class SettingsCheck final : private SettingsListener {
  public:
    using Report = std::function<void(const std::string& line)>;

    // `folder` is what would be the root of a volume. Lines go to `report` in the order in which
    // the documents are read: "file: key: found ..., using ..." for each value to mend, "file:
    // note: ..." for what is worth knowing, and a last one that sums up.
    SettingsCheck(std::string folder, Role role, Report report);

    // The number of values to mend.
    int run();

  private:
    void check(const SettingsDocument& document);
    void checkText(const SettingsDocument& document, const std::string& text);
    void tellMissing(const SettingsDocument& document, bool isThere);
    void tellUnknownKeys(const json11::Json& document, const std::set<std::string>& known);
    void tellForeignKeys(const json11::Json& document, const std::set<std::string>& own);

    void asked(const std::string& key) override;
    void found(const SettingsFinding& finding) override;
    void note(const std::string& text);
    void line(std::string text);

    std::string folder_;
    Role role_;
    Report report_;
    int count_ = 0;

    // Of the document that is being read.
    std::string file_;
    std::set<std::string> asked_;
    std::set<std::string> told_;
    bool otherRole_ = false; // whether the reads are not this role's
};

} // namespace QVR
