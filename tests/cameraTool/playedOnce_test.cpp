// What a conversion plays.
#include "cameraTool/recordCamera.h"
#include "server/ServerError.h"
#include "support/TemporaryFolder.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using cameraTool::ends;
using cameraTool::playedOnce;

TEST(PlayedOnce, PlaysFilesAndFoldersToTheirEnd) {
    const support::TemporaryFolder folder;
    const std::string bag = folder.write("film.bag", "");
    EXPECT_EQ(playedOnce(bag), "bag:" + bag + ",loop=off,pace=off");
    EXPECT_EQ(playedOnce(folder.path()), "images:" + folder.path() + ",loop=off,pace=off");
    EXPECT_TRUE(ends(playedOnce(bag)));
    EXPECT_TRUE(ends(playedOnce(folder.path())));
}

TEST(PlayedOnce, AddsToAUriWhatItDoesNotSay) {
    EXPECT_EQ(playedOnce("images:film,fps=15"), "images:film,fps=15,loop=off,pace=off");
    EXPECT_EQ(playedOnce("bag:film,pace=on"), "bag:film,pace=on,loop=off");
    EXPECT_EQ(playedOnce("images:film,loop=on"), "images:film,loop=on,pace=off");
    EXPECT_FALSE(ends("images:film,loop=on,pace=off"));
    EXPECT_EQ(playedOnce("simulated"), "simulated:pace=off");
    EXPECT_EQ(playedOnce("simulated:seed=3"), "simulated:seed=3,pace=off");
    EXPECT_EQ(playedOnce("simulated:pace=on"), "simulated:pace=on");
    EXPECT_FALSE(ends("simulated:pace=off"));
}

TEST(PlayedOnce, LeavesCamerasToRecording) {
    for (const char* camera : {"realsense", "realsense:0123"}) {
        try {
            playedOnce(camera);
            ADD_FAILURE() << camera;
        } catch (const server::ServerError& error) {
            EXPECT_EQ(error.code(), server::exitBadOption);
            EXPECT_STREQ(error.what(), "a connected camera is not converted but recorded: "
                                       "qvr-camera record");
        }
    }
}

TEST(PlayedOnce, SaysThatAFileIsNotThere) {
    try {
        playedOnce("nowhere.bag");
        ADD_FAILURE();
    } catch (const server::ServerError& error) {
        EXPECT_EQ(error.code(), server::exitBadOption);
        EXPECT_STREQ(error.what(), "there is no file or folder 'nowhere.bag'");
    }
}

} // namespace
