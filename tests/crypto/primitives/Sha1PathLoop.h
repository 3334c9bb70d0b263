#pragma once
// Runs a check once on the portable SHA-1 and once on the SHA extensions (where the processor
// has them), and restores the probe's choice afterwards.

#include <gtest/gtest.h>

#include <iostream>

#include "crypto/CpuFeatures.h"

namespace crypto::test {

template <typename Check>
void OnEachSha1Path(Check check) {
    for (const bool portable : {true, false}) {
        if (!portable && !CpuHasShaNi()) {
            std::cout << "[ SKIPPED  ] the SHA extensions: this processor has none\n";
            continue;
        }
        SetShaNiDisabled(portable);
        SCOPED_TRACE(Sha1PathName());
        check();
    }
    SetShaNiDisabled(false);
}

}  // namespace crypto::test
