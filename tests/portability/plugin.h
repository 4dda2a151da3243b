// The plug-in in the build under test, called the same way in each. A build has one source of its
// own for this: texts of C++ differ from compiler to compiler, and so does the way in.
#pragma once

#include "client/pluginFunctions.h"
#include "serverClient/frameProtocol.h"

#include <string>
#include <vector>

namespace portability {

const PluginFunctions& plugin();

// What is looked through for settings and calibrations.
void setVolumes(const std::vector<std::string>& roots);

void log(const std::string& message, float value);
void log(const std::string& message, int value);
std::string textOf(QVR::ProtocolHeader header);

// The camera pipeline, from its start to its end. A document, if there is one, is applied before.
std::string cameraInfo();
std::string readoutWith(const std::string& document);

} // namespace portability
