#include "demo/Summary.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <utility>

namespace demo {

namespace {

template <typename... Values>
std::string format(const char* pattern, Values... values) {
    char text[256];
    std::snprintf(text, sizeof text, pattern, values...);
    return text;
}

} // namespace

std::string figuresText(const Findings& findings, double tolerance) {
    std::string text;
    text +=
        format("  frames received   %6zu   (%.1f a second)\n", findings.frames, findings.frameRate);
    text += format("  touches seen      %6zu   (at most %zu at once)\n", findings.touchDowns,
                   findings.mostAtOnce);
    if (!findings.truthKnown) {
        return text + "  error                  -   (the truth behind these pictures is not "
                      "known)\n";
    }
    text += format("  fingers that touched %3zu   (%zu of them reported)\n", findings.contacts,
                   findings.contacts - findings.missed);
    if (findings.compared > 0) {
        text += format("  error, on average %6.2f mm   %5.2f pixels   (at most %g mm are "
                       "tolerated)\n",
                       findings.millimeters.mean, findings.pixels.mean, tolerance);
        text += format("  95 of 100 within  %6.2f mm   %5.2f pixels   (%zu touches compared with "
                       "where the fingers are)\n",
                       findings.millimeters.p95, findings.pixels.p95, findings.compared);
    }
    return text;
}

std::string picturesText(const std::string& folder) {
    constexpr std::array<std::pair<const char*, const char*>, 4> pictures = {{
        {"touches.png", "the touches on the depth picture"},
        {"depth.png", "what the depth camera sees: near is warm"},
        {"processed.png", "what the detection marked as fingertips"},
        {"color.png", "the same scene in colour"},
    }};
    std::string text;
    for (const auto& [name, meaning] : pictures) {
        const std::filesystem::path path = std::filesystem::path(folder) / name;
        std::error_code ignored;
        if (std::filesystem::exists(path, ignored)) {
            text += "  " + path.lexically_normal().string() + "  " + meaning + "\n";
        }
    }
    return text;
}

} // namespace demo
