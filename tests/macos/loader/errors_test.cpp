#include "macos/loader/system/errors.h"

#include <cerrno>

#include <gtest/gtest.h>
#include <unistd.h>

using loader::bundleErrno;
using loader::errorOfMacos;
using loader::withErrno;

TEST(ErrorNumbers, AreThoseOfMacos) {
    EXPECT_EQ(errorOfMacos(0), 0);
    EXPECT_EQ(errorOfMacos(EINTR), 4);
    EXPECT_EQ(errorOfMacos(ERANGE), 34);
    EXPECT_EQ(errorOfMacos(EAGAIN), 35);
    EXPECT_EQ(errorOfMacos(EINPROGRESS), 36);
    EXPECT_EQ(errorOfMacos(ECONNRESET), 54);
    EXPECT_EQ(errorOfMacos(ECONNREFUSED), 61);
    EXPECT_EQ(errorOfMacos(EDEADLK), 11);
    EXPECT_EQ(errorOfMacos(ENOMEDIUM), 5);
}

TEST(ErrorNumbers, StayAsTheyAreWhenACallSucceeds) {
    bundleErrno() = 7;
    EXPECT_EQ(withErrno([] { return access("/", F_OK); }), 0);
    EXPECT_EQ(bundleErrno(), 7);
    EXPECT_EQ(withErrno([] { return access("/nonexistent", F_OK); }), -1);
    EXPECT_EQ(bundleErrno(), 2);
}
