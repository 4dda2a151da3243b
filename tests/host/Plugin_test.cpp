#include "host/Plugin.h"

#include <gtest/gtest.h>

namespace {

using host::Plugin;

TEST(Plugin, FindsEveryFunctionByName) {
    std::string problem;
    const auto plugin = Plugin::load(SCRIPTED_PLUGIN, problem);
    ASSERT_NE(plugin, nullptr) << problem;
    plugin->functions().registerDebugCallback(nullptr);
    EXPECT_EQ(plugin->functions().update(), -100);
    EXPECT_NE(plugin->functions().outputCalibratedTouches, nullptr);
    EXPECT_EQ(problem, "");
}

TEST(Plugin, FindsEveryFunctionOfTheRealPlugin) {
    std::string problem;
    const auto plugin = Plugin::load(REAL_PLUGIN, problem);
    ASSERT_NE(plugin, nullptr) << problem;
    EXPECT_FALSE(plugin->functions().hasDepthCamera());
    EXPECT_EQ(plugin->functions().getTouchPoolSize(), -1);
}

TEST(Plugin, NamesTheMissingFunctionAndWhatToDo) {
    std::string problem;
    EXPECT_EQ(Plugin::load(INCOMPLETE_PLUGIN, problem), nullptr);
    EXPECT_EQ(problem, std::string("the plug-in ") + INCOMPLETE_PLUGIN +
                           " has no function update; use the plug-in of the same release as this "
                           "program");
}

TEST(Plugin, NamesTheMissingFileAndWhatToDo) {
    std::string problem;
    EXPECT_EQ(Plugin::load("/nowhere/plugin.so", problem), nullptr);
    EXPECT_EQ(problem, "plug-in not found: /nowhere/plugin.so; build it (target qvr_touch) or name "
                       "its file with --plugin FILE");
}

TEST(Plugin, SaysWhyAFileIsNoPluginInOneLine) {
    std::string problem;
    EXPECT_EQ(Plugin::load("/dev/null", problem), nullptr);
    EXPECT_EQ(problem.find("cannot load the plug-in: "), 0u) << problem;
    EXPECT_NE(problem.find("; name a plug-in built for this system with --plugin FILE"),
              std::string::npos);
    EXPECT_EQ(problem.find('\n'), std::string::npos);
}

TEST(Plugin, LooksBesideTheProgramAndInTheLibraryFolders) {
    const auto places = Plugin::defaultPlaces("/opt/qvr/bin");
    ASSERT_GE(places.size(), 2u);
    EXPECT_EQ(places[0].parent_path(), "/opt/qvr/bin");
    EXPECT_EQ(places[1].parent_path(), "/opt/qvr/lib");
}

TEST(Plugin, TellsWhereItLookedForItsOwnPlugin) {
    std::string problem;
    EXPECT_EQ(Plugin::loadDefault("/nowhere/bin", problem), nullptr);
    EXPECT_NE(problem.find(" is not in /nowhere/bin, /nowhere/lib"), std::string::npos) << problem;
}

} // namespace
