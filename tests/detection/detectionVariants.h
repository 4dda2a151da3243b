// Every form of the detection's inner functions that must equal the literal algorithm.
#pragma once

#include "detection/blobManager.h"
#include "detection/detectionKernels.h"

#include <string>

#include <gtest/gtest.h>

namespace literal {

// For ::testing::ValuesIn; which of them this machine has turns out in the test.
inline const char* const kernelNames[] = {"plain", "sse", "avx2", "avx512"};

// A suite that runs once per form, which the product uses meanwhile; a form that the processor
// lacks is skipped.
class EveryForm : public ::testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        kernels = QVR::findKernels(GetParam());
        if (kernels == nullptr) {
            GTEST_SKIP() << "this processor has no " << GetParam();
        }
        QVR::forceKernels(*kernels);
        ASSERT_EQ(QVR::blobManager().getKernelReadout(), GetParam());
    }
    void TearDown() override { QVR::forceKernels(QVR::chooseKernels(nullptr)); }

    bool plain() const { return std::string(GetParam()) == "plain"; }

    const QVR::DetectionKernels* kernels = nullptr;
};

inline std::string formName(const ::testing::TestParamInfo<const char*>& entry) {
    return entry.param;
}

} // namespace literal
