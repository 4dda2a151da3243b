#include "evaluate/pictureFiles.h"

#include "common/pngFile.h"
#include "evaluate/EvaluationError.h"
#include "host/Pictures.h"

namespace evaluate {

std::string writePicture(const host::Snapshot& snapshot, const std::filesystem::path& folder,
                         const std::string& name) {
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure) {
        throw EvaluationError(exitFailed, "cannot make the folder " + folder.string() + ": " +
                                              failure.message());
    }
    const std::string path = (folder / (name + ".png")).string();
    const std::string problem = programs::writePng(path, host::Pictures::compose(snapshot));
    if (!problem.empty()) {
        throw EvaluationError(exitFailed, problem);
    }
    return path;
}

} // namespace evaluate
