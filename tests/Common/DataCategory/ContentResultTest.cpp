#include <gtest/gtest.h>

#include "Common/DataCategory/ContentResult.h"
#include "tests/Common/DataCategory/RecordBytes.h"

namespace tests {
namespace {

using Zelmarik::CContentResult;
using Zelmarik::CRawReader;

// Every cut of a valid tree fails through the reader's flag, and a list whose element failed
// is left empty.
TEST(ContentResultRecord, TruncatedTreesFail) {
    const Bytes record = SampleTreeRecord();
    for (std::size_t size = 0; size < record.size(); ++size) {
        CContentResult tree;
        CRawReader in(std::span(record.data(), size));
        EXPECT_FALSE(tree.Deserialize(in)) << size;
        EXPECT_TRUE(in.Failed());
    }
    CContentResult::FileResult file;
    const Bytes fileRecord = SampleFileResultRecord();
    CRawReader in(std::span(fileRecord.data(), fileRecord.size() - 1));
    EXPECT_FALSE(file.Deserialize(in));
    EXPECT_TRUE(file.Core.Groups.empty());
    EXPECT_EQ(file.Definitions.size(), 1u) << "lists read before the failure stay";
}

TEST(ContentResultRecord, HostileCountsAndLengthsFailWithoutAllocating) {
    const auto readTree = [](const Bytes& record) {
        CContentResult tree;
        CRawReader in(record);
        return tree.Deserialize(in) || !in.Failed();
    };
    ByteBuilder hugeFileCount;
    hugeFileCount.U8(0).U32(3).Str(u"").Zeros(16).U8(0).U32(0xFFFFFFFF).Str(u"x");
    EXPECT_FALSE(readTree(hugeFileCount.Data()));

    // A string length whose byte count wraps a 32-bit size.
    ByteBuilder hugeText;
    hugeText.U8(0).U32(3).U32(0x80000000u).Zeros(64);
    EXPECT_FALSE(readTree(hugeText.Data()));

    ByteBuilder badPresence;
    badPresence.U8(2).U32(3).Str(u"").Zeros(16).U8(0).U32(0);
    EXPECT_FALSE(readTree(badPresence.Data()));
}

}  // namespace
}  // namespace tests
