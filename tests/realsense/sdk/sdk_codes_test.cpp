// Every number that stands for something else in the SDK.
#include "sdk/sdk_codes.h"

#include <algorithm>
#include <iterator>

#include <gtest/gtest.h>

using namespace camera::sdk;

TEST(SdkCodes, ShiftTheDepthOptionsByOne) {
    EXPECT_EQ(optionCode(RS_OPTION_F200_LASER_POWER), RS2_OPTION_LASER_POWER);
    EXPECT_EQ(optionCode(RS_OPTION_F200_ACCURACY), RS2_OPTION_ACCURACY);
    EXPECT_EQ(optionCode(RS_OPTION_F200_MOTION_RANGE), RS2_OPTION_MOTION_RANGE);
    EXPECT_EQ(optionCode(RS_OPTION_F200_FILTER_OPTION), RS2_OPTION_FILTER_OPTION);
    EXPECT_EQ(optionCode(RS_OPTION_F200_CONFIDENCE_THRESHOLD), RS2_OPTION_CONFIDENCE_THRESHOLD);
    // As numbers, which the camera would take either way.
    EXPECT_EQ(static_cast<int>(*optionCode(static_cast<rs_option>(14))), 15);
    EXPECT_EQ(static_cast<int>(*optionCode(static_cast<rs_option>(15))), 16);
    EXPECT_EQ(static_cast<int>(*optionCode(static_cast<rs_option>(16))), 17);
}

TEST(SdkCodes, KeepColorControlAsItIs) {
    for (int code = 0; code < 12; ++code) {
        const auto option = static_cast<rs_option>(code);
        EXPECT_EQ(static_cast<int>(*optionCode(option)), code);
        EXPECT_TRUE(isColorControl(option));
    }
    EXPECT_STREQ(rs2_option_to_string(*optionCode(static_cast<rs_option>(3))), "Exposure");
    EXPECT_STREQ(rs2_option_to_string(*optionCode(static_cast<rs_option>(9))), "White Balance");
    EXPECT_FALSE(isColorControl(RS_OPTION_F200_LASER_POWER));
    EXPECT_FALSE(isColorControl(static_cast<rs_option>(-1)));
}

TEST(SdkCodes, HaveNothingForOtherOptions) {
    EXPECT_EQ(optionCode(RS_OPTION_F200_DYNAMIC_FPS), std::nullopt);
    for (int code = 18; code < RS_OPTION_COUNT; ++code) {
        EXPECT_EQ(optionCode(static_cast<rs_option>(code)), std::nullopt) << code;
    }
    EXPECT_EQ(optionCode(static_cast<rs_option>(-1)), std::nullopt);
}

TEST(SdkCodes, ShiftTheStreamsByOne) {
    EXPECT_EQ(streamCode(RS_STREAM_DEPTH), RS2_STREAM_DEPTH);
    EXPECT_EQ(streamCode(RS_STREAM_COLOR), RS2_STREAM_COLOR);
    EXPECT_EQ(streamCode(RS_STREAM_INFRARED), RS2_STREAM_INFRARED);
    EXPECT_EQ(streamCode(RS_STREAM_INFRARED2), RS2_STREAM_INFRARED);
    EXPECT_EQ(streamCode(RS_STREAM_FISHEYE), RS2_STREAM_FISHEYE);
    for (int code = RS_STREAM_POINTS; code < RS_STREAM_COUNT; ++code) {
        EXPECT_EQ(streamCode(static_cast<rs_stream>(code)), RS2_STREAM_ANY) << "made, not native";
    }
}

TEST(SdkCodes, KeepTheFormats) {
    const std::pair<rs_format, const char*> formats[] = {
        {RS_FORMAT_Z16, "Z16"},      {RS_FORMAT_DISPARITY16, "DISPARITY16"},
        {RS_FORMAT_YUYV, "YUYV"},    {RS_FORMAT_RGB8, "RGB8"},
        {RS_FORMAT_BGR8, "BGR8"},    {RS_FORMAT_RGBA8, "RGBA8"},
        {RS_FORMAT_BGRA8, "BGRA8"},  {RS_FORMAT_Y8, "Y8"},
        {RS_FORMAT_Y16, "Y16"},      {RS_FORMAT_RAW10, "RAW10"},
        {RS_FORMAT_RAW16, "RAW16"},  {RS_FORMAT_RAW8, "RAW8"},
        {RS_FORMAT_XYZ32F, "XYZ32F"}};
    for (const auto& [format, name] : formats) {
        EXPECT_STREQ(rs2_format_to_string(formatCode(format)), name);
    }
}

TEST(SdkCodes, KeepLensesWhoseModelIsKnown) {
    const rs2_intrinsics lens{640,
                              480,
                              320.5f,
                              239.5f,
                              475.0f,
                              476.f,
                              RS2_DISTORTION_INVERSE_BROWN_CONRADY,
                              {1, 2, 3, 4, 5}};
    const rs_intrinsics result = intrinsicsFrom(lens);
    EXPECT_EQ(result.width, 640);
    EXPECT_EQ(result.height, 480);
    EXPECT_EQ(result.ppx, 320.5f);
    EXPECT_EQ(result.ppy, 239.5f);
    EXPECT_EQ(result.fx, 475.0f);
    EXPECT_EQ(result.fy, 476.0f);
    EXPECT_EQ(result.model, RS_DISTORTION_INVERSE_BROWN_CONRADY);
    EXPECT_TRUE(std::equal(std::begin(result.coeffs), std::end(result.coeffs), lens.coeffs));
    rs2_intrinsics other = lens;
    other.model = RS2_DISTORTION_MODIFIED_BROWN_CONRADY;
    EXPECT_EQ(intrinsicsFrom(other).model, RS_DISTORTION_MODIFIED_BROWN_CONRADY);
    other.model = RS2_DISTORTION_FTHETA;
    EXPECT_EQ(intrinsicsFrom(other).model, RS_DISTORTION_FTHETA);
}

TEST(SdkCodes, DropCoefficientsThatMeanNothing) {
    for (const auto model : {RS2_DISTORTION_NONE, RS2_DISTORTION_BROWN_CONRADY}) {
        const rs_intrinsics lens = intrinsicsFrom({8, 6, 4, 3, 7, 7, model, {1, 2, 3, 4, 5}});
        EXPECT_EQ(lens.model, RS_DISTORTION_NONE);
        EXPECT_EQ(std::count(std::begin(lens.coeffs), std::end(lens.coeffs), 0.0f), 5);
    }
}

TEST(SdkCodes, KeepPoses) {
    const rs_extrinsics pose = extrinsicsFrom({{1, 2, 3, 4, 5, 6, 7, 8, 9}, {10, 11, 12}});
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(pose.rotation[i], static_cast<float>(i + 1));
    }
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(pose.translation[i], static_cast<float>(i + 10));
    }
}
