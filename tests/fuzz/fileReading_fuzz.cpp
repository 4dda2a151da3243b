// Lookup and reading of files on volumes. Input: a path, a line feed, the file's content.
#include "foundation/utils.h"
#include "fuzzing.h"
#include "support/TemporaryVolume.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const support::TemporaryVolume volume;
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::size_t lineEnd = std::min(input.find('\n'), input.size());
    const std::string path = input.substr(0, lineEnd);
    const std::string content = lineEnd < input.size() ? input.substr(lineEnd + 1) : "";

    volume.write("file", content);
    fuzzing::require(QVR::utils::findFilePath("file") == volume.path("file"),
                     "the first volume is looked at first");
    fuzzing::require(QVR::utils::readFileContent(volume.path("file")) == content,
                     "a file is read as it is");
    const std::string found = QVR::utils::findFilePath(path);
    fuzzing::require(found.ends_with(path), "a path is kept behind the volume");
    fuzzing::require(QVR::utils::readFileContent(volume.path("")).empty(),
                     "a folder has no content");
    return 0;
}
