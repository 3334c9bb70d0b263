#pragma once
// Runs a test once on the table-driven AES and once on AES-NI (skipped where the processor has
// none), and restores the probe's choice afterwards.

#include <gtest/gtest.h>

#include <iostream>
#include <string>
#include <tuple>

#include "crypto/CpuFeatures.h"

namespace crypto::test {

enum class AesPath { Tables, AesNi };

inline std::string AesPathLabel(const testing::TestParamInfo<AesPath>& info) {
    return info.param == AesPath::Tables ? "Tables" : "AesNi";
}

inline void SelectAesPath(AesPath path) {
    SetAesNiDisabled(path == AesPath::Tables);
}

inline AesPath PathOf(AesPath path) {
    return path;
}

template <typename T>
AesPath PathOf(const std::tuple<T, AesPath>& param) {
    return std::get<1>(param);
}

// Parameters: an AesPath, or a tuple whose second element is one.
template <typename Param>
class AesPathTestWith : public testing::TestWithParam<Param> {
protected:
    void SetUp() override {
        const AesPath path = PathOf(this->GetParam());
        if (path == AesPath::AesNi && !CpuHasAesNi()) {
            GTEST_SKIP() << "no AES-NI on this processor";
        }
        SelectAesPath(path);
    }
    void TearDown() override { SetAesNiDisabled(false); }
};

using AesPathTest = AesPathTestWith<AesPath>;

}  // namespace crypto::test
