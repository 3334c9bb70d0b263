// -T/--threads of dcf create, extract and test: any count in range gives back the same files.
#include <gtest/gtest.h>

#include <string>

#include "tests/TestFolder.h"
#include "tests/tools/dcf/DcfProgram.h"

namespace {

using namespace dcftest;

TEST(ThreadsOption, EveryCountInRangeRoundTripsAndOthersAreRefused) {
    tests::TestFolder folder;
    const fs::path root = folder.Native();
    // Several batches of pieces, so that more than one thread has work.
    std::string text;
    for (int line = 0; text.size() < 600000; ++line) {
        text += std::to_string(line * 7919) + " entry\n";
    }
    WriteAll(root / "data/log.txt", text);
    WriteAll(root / "password", "secret\n");
    const std::string key = " --password-file password";

    for (const std::string threads : {"1", "8"}) {
        const std::string archive = "t" + threads + ".dcf";
        const Outcome created =
            RunDcf(root, "create -q -T " + threads + key + " " + archive + " data");
        ASSERT_EQ(created.code, 0) << created.err;
        EXPECT_EQ(RunDcf(root, "test -q --threads 3" + key + " " + archive).code, 0);
        const Outcome extracted =
            RunDcf(root, "extract -q -T " + threads + key + " -C out" + threads + " " + archive);
        ASSERT_EQ(extracted.code, 0) << extracted.err;
        EXPECT_EQ(ReadAll(root / ("out" + threads) / "data/log.txt"), text);
    }
    for (const std::string refused : {"0", "9", "many"}) {
        ExpectFailure(RunDcf(root, "extract -T " + refused + key + " t1.dcf"), kUsage, "",
                      "--threads");
    }
}

}  // namespace
