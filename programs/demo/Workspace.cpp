#include "demo/Workspace.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <stdexcept>

namespace demo {

namespace fs = std::filesystem;

Workspace::Workspace(const fs::path& examples) {
    std::string pattern = (fs::temp_directory_path() / "qvr-demo-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("cannot make the folder " + pattern + ": " + std::strerror(errno));
    }
    folder_ = pattern;
    try {
        copySettings(examples);
    } catch (...) {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
        throw;
    }
}

Workspace::~Workspace() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

void Workspace::copySettings(const fs::path& examples) {
    const fs::path calibration = folder_ / "QVR_calibration";
    fs::create_directory(calibration);
    const fs::path inner = examples / "QVR_calibration";
    const fs::path source = fs::is_directory(inner) ? inner : examples;
    bool any = false;
    if (fs::is_directory(source)) {
        for (const fs::directory_entry& entry : fs::directory_iterator(source)) {
            if (entry.path().extension() == ".json") {
                fs::copy_file(entry.path(), calibration / entry.path().filename());
                any = true;
            }
        }
    }
    if (!any) {
        throw std::runtime_error("no settings (*.json) in " + examples.string() +
                                 "; name their folder with --examples DIR");
    }
}

std::string lastLines(const std::string& path, std::size_t lines) {
    std::ifstream file(path);
    std::deque<std::string> kept;
    for (std::string line; std::getline(file, line);) {
        kept.push_back(line);
        if (kept.size() > lines) {
            kept.pop_front();
        }
    }
    std::string text;
    for (const std::string& line : kept) {
        text += line + "\n";
    }
    return text;
}

} // namespace demo
