// The settings documents, and how each role of the library reads them.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace QVR {

enum class Role { host, server };

struct SettingsDocument {
    // Reads the text by what the pipeline reads it with.
    using Reader = std::function<void(const std::string& text)>;

    std::string path;      // relative to a volume's root
    std::string ifMissing; // what the role does without a file that it can read
    std::string ifBroken;  // what it does when the file is no JSON
    bool isNeeded = false; // whether a person should mend it when it is missing
    Reader ownReader;      // null: the role does not read it
    Reader otherReader;    // the other role's; null: that one does not read it
};

// In the order in which the role reads them, those that only the other role reads at the end.
std::vector<SettingsDocument> settingsDocuments(Role role);

} // namespace QVR
