// Error objects and the exception built from them.
#include "c_interface.h"
#include "support/calls.h"

#include <gtest/gtest.h>

using namespace camera_test;

namespace {

rs_error* newError() {
    rs_error* error = nullptr;
    rs_get_device_name(nullptr, &error);
    return error;
}

TEST(Error, IsANewObjectForEachFailure) {
    rs_error* const first = newError();
    rs_error* slot = first;
    rs_get_device_serial(nullptr, &slot);
    ASSERT_NE(slot, first);
    EXPECT_STREQ(rs_get_failed_function(first), "rs_get_device_name") << "the old one is not freed";
    EXPECT_STREQ(rs_get_failed_function(slot), "rs_get_device_serial");
    rs_free_error(first);
    rs_free_error(slot);
}

TEST(Error, LeavesTheFunctionsNameBehind) {
    rs_error* const error = newError();
    const char* const function = rs_get_failed_function(error);
    rs_free_error(error);
    EXPECT_STREQ(function, "rs_get_device_name");
}

TEST(Error, AnswersNullForNull) {
    EXPECT_EQ(rs_get_failed_function(nullptr), nullptr);
    EXPECT_EQ(rs_get_failed_args(nullptr), nullptr);
    EXPECT_EQ(rs_get_error_message(nullptr), nullptr);
    rs_free_error(nullptr);
}

TEST(RsError, CarriesMessageFunctionAndArguments) {
    const rs::error error = newError();
    EXPECT_STREQ(error.what(), "argument device is null");
    EXPECT_EQ(error.get_failed_function(), "rs_get_device_name");
    EXPECT_EQ(error.get_failed_args(), "device:0");
}

TEST(RsError, IsARuntimeError) {
    try {
        rs::error::handle(newError());
        FAIL() << "nothing thrown";
    } catch (const std::runtime_error& caught) {
        const auto* const error = dynamic_cast<const rs::error*>(&caught);
        ASSERT_NE(error, nullptr);
        EXPECT_EQ(error->get_failed_function(), "rs_get_device_name");
    }
}

TEST(RsError, DoesNothingForNoError) {
    EXPECT_NO_THROW(rs::error::handle(nullptr));
}

TEST(CInterface, CompilesAndRunsFromC) {
    EXPECT_EQ(checkInterfaceFromC(), 0);
}

} // namespace
