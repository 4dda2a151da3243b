// Hears what the reads of a settings document come to, for whoever explains the document to a
// person. Nobody listens while the pipeline runs.
#pragma once

#include <string>

namespace QVR {

// A value that a person may want to mend.
struct SettingsFinding {
    std::string key;   // with the objects around it, as in "streaming.fps"; "" for the document
    std::string found; // what is there
    std::string used;  // what is done instead, or what comes of it
};

class SettingsListener {
  public:
    virtual ~SettingsListener() = default;

    // The value under this key is looked at, whether it is there or not.
    virtual void asked(const std::string& key) = 0;
    virtual void found(const SettingsFinding& finding) = 0;

    // The one that hears this thread's reads, or null.
    static SettingsListener* current();
};

// Lets `listener` hear this thread's reads while it lives.
class ListeningToSettings {
  public:
    explicit ListeningToSettings(SettingsListener& listener);
    ~ListeningToSettings();
    ListeningToSettings(const ListeningToSettings&) = delete;
    ListeningToSettings& operator=(const ListeningToSettings&) = delete;

  private:
    SettingsListener* before_;
};

} // namespace QVR
