// The choice among the forms of detection's inner steps.
#include "detection/blobManager.h"
#include "detection/detectionKernels.h"
#include "detection/vectorForms.h"
#include "detectionVariants.h"

#include <algorithm>
#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace {

TEST(DetectionKernels, PlainIsAlwaysThere) {
    const QVR::DetectionKernels* plain = QVR::findKernels("plain");
    ASSERT_NE(plain, nullptr);
    EXPECT_STREQ(plain->name, "plain");
    EXPECT_EQ(plain->findRuns, &QVR::findRuns);
    EXPECT_EQ(plain->addRowToCenter, &QVR::addRowToCenter);
}

TEST(DetectionKernels, BestSupportedFormIsChosen) {
    const char* best = "plain";
    for (const char* name : literal::kernelNames) {
        if (QVR::findKernels(name) != nullptr) {
            best = name; // the names go from slow to fast
        }
    }
    EXPECT_STREQ(QVR::chooseKernels(nullptr).name, best);
}

TEST(DetectionKernels, NameIsHonouredWhereTheProcessorHasIt) {
    for (const char* name : literal::kernelNames) {
        const QVR::DetectionKernels* kernels = QVR::findKernels(name);
        EXPECT_STREQ(QVR::chooseKernels(name).name,
                     kernels != nullptr ? name : QVR::chooseKernels(nullptr).name);
    }
}

TEST(DetectionKernels, UnknownNameGivesTheBestForm) {
    for (const char* name : {"", "AVX2", "avx", "neon", "avx2 "}) {
        EXPECT_EQ(QVR::findKernels(name), nullptr) << name;
        EXPECT_EQ(&QVR::chooseKernels(name), &QVR::chooseKernels(nullptr)) << name;
    }
}

TEST(DetectionKernels, UnsupportedFormIsNotFound) {
    for (const QVR::VectorForm& form : QVR::vectorForms()) {
        EXPECT_EQ(QVR::findKernels(form.kernels->name), form.supported ? form.kernels : nullptr);
    }
}

TEST(DetectionKernels, FormsShareNoStep) {
    std::set<const void*> steps;
    std::size_t count = 0;
    for (const char* name : literal::kernelNames) {
        if (const QVR::DetectionKernels* kernels = QVR::findKernels(name)) {
            steps.insert(reinterpret_cast<const void*>(kernels->findNearest));
            steps.insert(reinterpret_cast<const void*>(kernels->markUpTo));
            steps.insert(reinterpret_cast<const void*>(kernels->findRuns));
            steps.insert(reinterpret_cast<const void*>(kernels->addRowToCenter));
            count += 4;
        }
    }
    EXPECT_EQ(steps.size(), count);
}

TEST(DetectionKernels, ForcedFormIsReported) {
    QVR::blobManager manager;
    for (const char* name : literal::kernelNames) {
        if (const QVR::DetectionKernels* kernels = QVR::findKernels(name)) {
            QVR::forceKernels(*kernels);
            EXPECT_EQ(manager.getKernelReadout(), name);
        }
    }
    QVR::forceKernels(QVR::chooseKernels(nullptr));
}

// A form that counts its steps and leaves them to the plain one.
std::size_t counted[4];

const QVR::DetectionKernels countingKernels{
    "counting",
    [](const QVR::DepthView& image, const QVR::FlatnessSettings& settings, std::uint8_t*,
       std::uint8_t* mask) {
        counted[0] += 1;
        return QVR::markFlatPixels(image, settings, mask);
    },
    [](const QVR::DepthView& image, const QVR::FlatnessSettings&, std::uint16_t cut,
       const std::uint8_t*, std::uint8_t* mask) {
        counted[1] += 1;
        QVR::clearBeyondCut(image.pixels, std::size_t{image.width} * image.height, cut, mask);
    },
    [](const std::uint8_t* maskRow, std::uint32_t width, const QVR::RunSettings& settings,
       QVR::BlobRun* runs) {
        counted[2] += 1;
        return QVR::findRuns(maskRow, width, settings, runs);
    },
    [](const unsigned short* depthRow, std::uint32_t first, std::uint32_t last, std::uint32_t y,
       std::uint16_t cutoff, std::uint32_t bias, QVR::CenterSums& sums) {
        counted[3] += 1;
        QVR::addRowToCenter(depthRow, first, last, y, cutoff, bias, sums);
    },
};

TEST(DetectionKernels, EveryStepOfAFrameRunsInTheForcedForm) {
    std::vector<unsigned short> depth(std::size_t{100} * 40, 1000);
    for (std::size_t y = 0; y < 40; ++y) {
        std::fill_n(depth.begin() + static_cast<std::ptrdiff_t>(y * 100 + 90), 10, 9000); // a gap
    }
    QVR::blobManager manager;
    manager.setConfig(8000.0f, 100, 40);
    QVR::forceKernels(countingKernels);
    EXPECT_EQ(manager.getKernelReadout(), "counting");
    manager.processFrame(depth.data());
    manager.extractBlobs(depth.data());
    QVR::forceKernels(QVR::chooseKernels(nullptr));
    EXPECT_EQ(counted[0], 1U);
    EXPECT_EQ(counted[1], 1U);
    EXPECT_EQ(counted[2], 40U);
    EXPECT_EQ(counted[3], 40U);
}

} // namespace
