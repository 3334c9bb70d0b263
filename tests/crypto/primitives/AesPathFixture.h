#pragma once
// Runs a test once on the table-driven AES and once on AES-NI (skipped where the processor has
// none), and restores the probe's choice afterwards.

#include <gtest/gtest.h>

#include <iostream>
#include <string>

#include "crypto/CpuFeatures.h"

namespace crypto::test {

enum class AesPath { Tables, AesNi };

inline std::string AesPathLabel(const testing::TestParamInfo<AesPath>& info) {
    return info.param == AesPath::Tables ? "Tables" : "AesNi";
}

inline void SelectAesPath(AesPath path) {
    SetAesNiDisabled(path == AesPath::Tables);
}

// Call from SetUp; false means the test must skip.
inline bool AesPathAvailable(AesPath path) {
    return path == AesPath::Tables || CpuHasAesNi();
}

class AesPathTest : public testing::TestWithParam<AesPath> {
protected:
    void SetUp() override {
        if (!AesPathAvailable(GetParam())) {
            GTEST_SKIP() << "no AES-NI on this processor";
        }
        SelectAesPath(GetParam());
    }
    void TearDown() override { SetAesNiDisabled(false); }
};

}  // namespace crypto::test
