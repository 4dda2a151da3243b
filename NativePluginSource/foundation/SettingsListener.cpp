#include "foundation/SettingsListener.h"

namespace QVR {

namespace {

thread_local SettingsListener* listening = nullptr;

} // namespace

SettingsListener* SettingsListener::current() {
    return listening;
}

ListeningToSettings::ListeningToSettings(SettingsListener& listener) : before_(listening) {
    listening = &listener;
}

ListeningToSettings::~ListeningToSettings() {
    listening = before_;
}

} // namespace QVR
