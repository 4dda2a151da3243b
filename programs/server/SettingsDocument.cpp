#include "SettingsDocument.h"

#include "ServerError.h"
#include "foundation/utils.h"

namespace server {

SettingsDocument SettingsDocument::read() {
    SettingsDocument document;
    document.path = QVR::utils::findFilePath(QVR::utils::distortionMapFilePath);
    const std::string text = QVR::utils::readFileContent(document.path);
    if (text.empty())
        return document;
    const std::string none = "noError";
    std::string error = none;
    document.value = json11::Json::parse(text, error);
    if (error != none)
        throw ServerError(exitBadSettings, document.path + " is not valid JSON: " + error);
    if (!document.value.is_object())
        throw ServerError(exitBadSettings, document.path + " holds no JSON object");
    return document;
}

} // namespace server
