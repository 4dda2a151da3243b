// The bundle's volume list on this machine's volumes: its messages go to GNUstep's own workspace.
#include "macos/bundle/LibcxxString.h"
#include "macos/loader/Bundle.h"
#include "support/TemporaryFolder.h"

#include <string>

#include <gtest/gtest.h>

namespace {

std::string findFilePath(const std::string& relativePath) {
    static const loader::Bundle bundle(MACOS_PLUGIN);
    LibcxxString argument(relativePath);
    LibcxxString result;
    bundle.function<void(LibcxxString*, LibcxxString*)>(
        "_ZN3QVR5utils12findFilePathENSt3__112basic_stringIcNS1_11char_traitsIcEENS1_9allocatorIcEE"
        "EE")(&result, &argument);
    return result.text();
}

} // namespace

TEST(FindFilePathOfTheBundle, LooksOnTheVolumesOfGnustepsWorkspace) {
    const support::TemporaryFolder folder;
    const std::string file = folder.write("touch.json", "{}");
    EXPECT_EQ(findFilePath(file.substr(1)), "/" + file);
    EXPECT_EQ(findFilePath("nowhere-8f21c7"), "nowhere-8f21c7");
}
