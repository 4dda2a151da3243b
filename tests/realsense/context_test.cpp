// One context in the process: counting, the version rule, and what a failed creation leaves.
#include "support/ScriptedSource.h"
#include "support/calls.h"

#include <cstdlib>
#include <stdexcept>

#include <gtest/gtest.h>

using namespace camera_test;

namespace {

class Context : public testing::Test {
  protected:
    void SetUp() override {
        unsetenv("QVR_CAMERA");
        camera::setEnumeration(nullptr);
    }
    void TearDown() override {
        unsetenv("QVR_CAMERA");
        camera::setEnumeration(nullptr);
    }
};

TEST_F(Context, AcceptsAnyPatchOfItsMajorAndMinorVersion) {
    for (const int version : {11200, 11201, 11299}) {
        rs_context* const context = call(rs_create_context, version);
        EXPECT_NE(context, nullptr) << version;
        call(rs_delete_context, context);
    }
}

TEST_F(Context, RefusesOtherVersions) {
    for (const int version : {11301, 10901, 11199, 11300, 21201, 0, -11201}) {
        const Failure found = failure(rs_create_context, version);
        EXPECT_EQ(found.function, "rs_create_context");
        EXPECT_EQ(found.arguments, "api_version:" + std::to_string(version));
        EXPECT_EQ(found.message, "the program was built for interface version " +
                                     std::to_string(version) + ", the library has 11201");
    }
    rs_context* const context = call(rs_create_context, RS_API_VERSION);
    EXPECT_NE(context, nullptr) << "a wrong version is no failed creation";
    call(rs_delete_context, context);
}

TEST_F(Context, HasNoDeviceWithoutAChosenSource) {
    rs_context* const context = call(rs_create_context, RS_API_VERSION);
    EXPECT_EQ(call(rs_get_device_count, context), 0);
    EXPECT_EQ(messageOf(rs_get_device, context, 0),
              "argument index is not below the number of devices, 0");
    call(rs_delete_context, context);
}

TEST_F(Context, LivesUntilItsLastUserIsGone) {
    auto script = std::make_shared<Script>();
    selectSource([script] { return std::make_unique<ScriptedSource>(script); });
    rs_context* const context = call(rs_create_context, RS_API_VERSION);
    EXPECT_EQ(call(rs_create_context, RS_API_VERSION), context);
    EXPECT_EQ(call(rs_create_context, RS_API_VERSION), context);
    call(rs_delete_context, context);
    call(rs_delete_context, context);
    EXPECT_TRUE(script->alive);
    EXPECT_EQ(call(rs_get_device_count, context), 1);
    call(rs_delete_context, context);
    EXPECT_FALSE(script->alive);
    EXPECT_EQ(messageOf(rs_delete_context, context), "the context has been deleted already");
}

TEST_F(Context, EnumeratesOnceForAllItsUsers) {
    int enumerated = 0;
    camera::setEnumeration([&enumerated] {
        ++enumerated;
        return std::vector<std::unique_ptr<camera::Device>>();
    });
    rs_context* const context = call(rs_create_context, RS_API_VERSION);
    call(rs_create_context, RS_API_VERSION);
    EXPECT_EQ(enumerated, 1);
    call(rs_delete_context, context);
    call(rs_delete_context, context);
    call(rs_delete_context, call(rs_create_context, RS_API_VERSION));
    EXPECT_EQ(enumerated, 2);
}

TEST_F(Context, KeepsItsDevicesWhenAnotherSourceIsChosen) {
    auto script = std::make_shared<Script>();
    selectSource([script] { return std::make_unique<ScriptedSource>(script); });
    rs_context* const context = call(rs_create_context, RS_API_VERSION);
    call(rs_select_camera_source, static_cast<const char*>(nullptr));
    EXPECT_EQ(call(rs_create_context, RS_API_VERSION), context);
    EXPECT_EQ(call(rs_get_device_count, context), 1);
    call(rs_delete_context, context);
    call(rs_delete_context, context);
    rs_context* const next = call(rs_create_context, RS_API_VERSION);
    EXPECT_EQ(call(rs_get_device_count, next), 0);
    call(rs_delete_context, next);
}

TEST_F(Context, IsNullWithoutAnErrorAfterAFailedCreation) {
    camera::setEnumeration([]() -> std::vector<std::unique_ptr<camera::Device>> {
        throw std::runtime_error("the driver cannot be opened");
    });
    EXPECT_EQ(messageOf(rs_create_context, RS_API_VERSION), "the driver cannot be opened");
    for (int attempt = 0; attempt < 3; ++attempt) {
        rs_error* const before = reinterpret_cast<rs_error*>(8);
        rs_error* slot = before;
        EXPECT_EQ(rs_create_context(RS_API_VERSION, &slot), nullptr);
        EXPECT_EQ(slot, before);
    }
    EXPECT_EQ(messageOf(rs_get_device_count, static_cast<const rs_context*>(nullptr)),
              "argument context is null");
}

TEST_F(Context, IsTriedAnewOnceAnotherSourceIsChosen) {
    camera::setEnumeration([]() -> std::vector<std::unique_ptr<camera::Device>> {
        throw std::runtime_error("the driver cannot be opened");
    });
    EXPECT_NE(messageOf(rs_create_context, RS_API_VERSION), "");
    call(rs_select_camera_source, "");
    rs_context* const context = call(rs_create_context, RS_API_VERSION);
    EXPECT_NE(context, nullptr);
    call(rs_delete_context, context);
}

TEST_F(Context, ReportsAnExceptionThatIsNoStandardOne) {
    camera::setEnumeration([]() -> std::vector<std::unique_ptr<camera::Device>> { throw 7; });
    EXPECT_EQ(messageOf(rs_create_context, RS_API_VERSION), "unknown failure");
}

TEST_F(Context, ReportsAWrongSourceInTheEnvironment) {
    setenv("QVR_CAMERA", "kaleidoscope", 1);
    const Failure found = failure(rs_create_context, RS_API_VERSION);
    EXPECT_EQ(found.function, "rs_create_context");
    EXPECT_EQ(found.message.find("unknown camera source \"kaleidoscope\"; accepted: "), 0u)
        << found.message;
}

TEST_F(Context, TakesAnEmptyEnvironmentVariableForNone) {
    setenv("QVR_CAMERA", "", 1);
    rs_context* const context = call(rs_create_context, RS_API_VERSION);
    EXPECT_EQ(call(rs_get_device_count, context), 0);
    call(rs_delete_context, context);
}

TEST_F(Context, PrefersTheChosenSourceToTheEnvironment) {
    setenv("QVR_CAMERA", "kaleidoscope", 1);
    selectSource([] { return std::make_unique<ScriptedSource>(std::make_shared<Script>()); });
    rs_context* const context = call(rs_create_context, RS_API_VERSION);
    EXPECT_STREQ(call(rs_get_device_name, call(rs_get_device, context, 0)), "Scripted camera");
    call(rs_delete_context, context);
}

} // namespace
