// Every file of a target's corpus through the target, in the builds that everybody makes. The
// corpus folder is this program's argument.
#include "foundation/utils.h"
#include "fuzzing.h"

#include <filesystem>
#include <vector>

#include <gtest/gtest.h>

namespace {

std::string corpusFolder;

std::vector<std::filesystem::path> corpus() {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(corpusFolder)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

TEST(FuzzCorpus, IsThere) {
    EXPECT_FALSE(corpus().empty()) << corpusFolder;
}

TEST(FuzzCorpus, StaysSmallEnoughToBeCheckedIn) {
    std::uintmax_t total = 0;
    for (const auto& file : corpus()) {
        EXPECT_LE(std::filesystem::file_size(file), 64U * 1024U) << file;
        total += std::filesystem::file_size(file);
    }
    EXPECT_LE(total, 300U * 1024U) << corpusFolder;
}

TEST(FuzzCorpus, FindsNothing) {
    for (const auto& file : corpus()) {
        SCOPED_TRACE(file);
        const std::string bytes = QVR::utils::readFileContent(file.string());
        // As libFuzzer does: a block of its own for each input, so that a sanitizer sees every
        // read past its end.
        const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
        EXPECT_EQ(LLVMFuzzerTestOneInput(input.data(), input.size()), 0);
    }
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CORPUS_FOLDER\n", argv[0]);
        return 2;
    }
    corpusFolder = argv[1];
    return RUN_ALL_TESTS();
}
