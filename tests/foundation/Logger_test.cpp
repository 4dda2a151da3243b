#include "foundation/Logger.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using QVR::Logger;
using support::LogCapture;
using testing::ElementsAre;

namespace {

template <typename... Arguments>
std::string printed(Arguments... arguments) {
    testing::internal::CaptureStdout();
    Logger::Log(arguments...);
    return testing::internal::GetCapturedStdout();
}

int receivedBySecond = 0;

} // namespace

TEST(Logger, PrintsWithANewlineWhenNoCallbackIsRegistered) {
    Logger::RegisterDebugCallback(nullptr);
    EXPECT_EQ(printed("abc"), "abc\n");
}

TEST(Logger, PrintsConversionSpecificationsAsTheyStand) {
    Logger::RegisterDebugCallback(nullptr);
    EXPECT_EQ(printed("100% of %d %s %n %%"), "100% of %d %s %n %%\n");
}

TEST(Logger, PrintsNumbersDirectlyBehindTheMessage) {
    Logger::RegisterDebugCallback(nullptr);
    EXPECT_EQ(printed("count: ", 5), "count: 5\n");
    EXPECT_EQ(printed("value", 0.8f), "value0.8\n");
}

TEST(Logger, HandsTheCallbackExactlyTheMessage) {
    const LogCapture log;
    EXPECT_EQ(printed("abc"), "");
    EXPECT_THAT(LogCapture::messages(), ElementsAre("abc"));
}

TEST(Logger, HandsTheCallbackPercentSignsAndLineEndingsUnchanged) {
    const LogCapture log;
    Logger::Log("%d %s %n\n");
    Logger::Log("");
    EXPECT_THAT(LogCapture::messages(), ElementsAre("%d %s %n\n", ""));
}

TEST(Logger, AppendsIntegersWithoutASeparator) {
    const LogCapture log;
    Logger::Log("count: ", 5);
    Logger::Log("count: ", -2147483647 - 1);
    EXPECT_THAT(LogCapture::messages(), ElementsAre("count: 5", "count: -2147483648"));
}

TEST(Logger, WritesFloatsWithSixSignificantDigits) {
    const LogCapture log;
    Logger::Log("value", 0.8f);
    Logger::Log("", 1200000.0f);
    Logger::Log("", 123456.7f);
    Logger::Log("", 1.0f);
    Logger::Log("", 0.00001f);
    EXPECT_THAT(LogCapture::messages(), ElementsAre("value0.8", "1.2e+06", "123457", "1", "1e-05"));
}

TEST(Logger, ReplacesTheEarlierCallback) {
    const LogCapture log;
    receivedBySecond = 0;
    Logger::RegisterDebugCallback([](const char*) { ++receivedBySecond; });
    Logger::Log("abc");
    EXPECT_EQ(receivedBySecond, 1);
    EXPECT_TRUE(LogCapture::messages().empty());
}

TEST(Logger, PrintsAgainOnceNullIsRegistered) {
    {
        const LogCapture log;
        Logger::RegisterDebugCallback(nullptr);
        EXPECT_EQ(Logger::logCallback, nullptr);
        EXPECT_EQ(printed("abc"), "abc\n");
        EXPECT_TRUE(LogCapture::messages().empty());
    }
}
