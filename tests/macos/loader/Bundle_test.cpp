#include "macos/loader/Bundle.h"
#include "support/TemporaryFolder.h"

#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

std::string refusalOf(const std::string& path) {
    try {
        const loader::Bundle bundle(path);
    } catch (const std::runtime_error& failure) {
        return failure.what();
    }
    return "";
}

} // namespace

// A process has one bundle, so each of these is in a process of its own.
TEST(BundleLoader, SaysThatAFileIsMissing) {
    EXPECT_EQ(refusalOf("/nonexistent"), "/nonexistent: No such file or directory");
}

TEST(BundleLoader, RefusesWhatIsNoBundle) {
    EXPECT_THAT(refusalOf("/proc/self/exe"), testing::StartsWith("/proc/self/exe: "));
}

TEST(BundleLoader, RefusesATruncatedFile) {
    const support::TemporaryFolder folder;
    const std::string header("\xCF\xFA\xED\xFE\x07\0\0\x01\x03\0\0\0\x08\0\0\0\x09\0\0\0", 20);
    EXPECT_NE(refusalOf(folder.write("bundle", header)), "");
}

TEST(BundleLoader, RefusesASecondBundle) {
    EXPECT_NE(refusalOf("/nonexistent"), "");
    EXPECT_EQ(refusalOf("/nonexistent"), "there is a bundle in this process already");
}
