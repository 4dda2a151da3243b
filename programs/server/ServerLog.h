// What the server tells the person at the terminal, on standard error.
#pragma once

#include <string>
#include <string_view>

namespace server {

// Any thread; one line each, never a piece of one.
class ServerLog {
  public:
    // What its own lines begin with, "qvr-server" unless another program uses the server's parts.
    // Before the first line.
    static void setProgram(const std::string& name);

    // Everything, or only what a user has to know.
    static void setVerbose(bool verbose);

    // A line of the server's own that is always shown.
    static void notice(const std::string& text);
    // The same for what others can make happen again and again: the same text only once in ten
    // seconds.
    static void noticeSparingly(const std::string& text);
    // A line of the server's own for --verbose.
    static void detail(const std::string& text);

    // While on, the pipeline's messages show only with --verbose: a camera that is being waited
    // for fails the same way again and again.
    static void setPipelineQuiet(bool quiet);

    // The pipeline's log callback. Without --verbose it passes warnings, errors and what the
    // camera says, and the same message only once in ten seconds.
    static void receivePipelineMessage(const char* message);

    // The last reason that the camera gave for not starting or delivering, or "".
    static std::string cameraComplaint();

    // Whether a message of the pipeline is a warning, an error or the camera's by its own words.
    // The reason that follows the announcement of a failed frame has no words to tell it by.
    static bool isImportant(std::string_view message);
};

} // namespace server
