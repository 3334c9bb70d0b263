#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "Common/DataCategory/CategoryDefaults.h"
#include "Common/DataCategory/DlpCategory.h"
#include "tests/Common/DataCategory/RecordBytes.h"

namespace tests {
namespace {

using Zelmarik::CDlpCategory;
using Zelmarik::CRawReader;

TEST(DlpCategoryRecord, EveryFieldInRecordOrderAndBackUnchanged) {
    const Bytes record = SampleCategoryRecord();
    EXPECT_EQ(RecordOf(SampleCategory()), record);

    CDlpCategory read;
    CRawReader in(record);
    ASSERT_TRUE(read.Deserialize(in));
    EXPECT_EQ(in.Remaining(), 0);
    EXPECT_FALSE(read.Marked) << "Marked is not stored";
    EXPECT_EQ(RecordOf(read), record);
}

TEST(DlpCategoryRecord, AbsentPartsResetWhatWasThere) {
    CDlpCategory category = SampleCategory();
    const Bytes record = RecordOf(CDlpCategory());
    CRawReader in(record);
    ASSERT_TRUE(category.Deserialize(in));
    EXPECT_FALSE(category.Content);
    EXPECT_FALSE(category.Extensions.has_value());
    EXPECT_EQ(RecordOf(category), record);
}

TEST(DlpCategoryRecord, DamagedRecordsFail) {
    const Bytes valid = SampleCategoryRecord();
    const auto fails = [](const Bytes& record) {
        CDlpCategory category;
        CRawReader in(record);
        const bool ok = category.Deserialize(in);
        return !ok && in.Failed();
    };
    for (std::size_t size = 0; size < valid.size(); size += 7) {
        EXPECT_TRUE(fails(Bytes(valid.begin(), valid.begin() + size))) << size;
    }

    // Presence bytes other than 0 and 1; the content byte sits behind the fixed fields.
    constexpr std::size_t kContentByte = 16 + 4 + 4 + 6 + 6 + 8 + 4 + 4 + 8 + 1;
    Bytes badContent = RecordOf(CDlpCategory());
    badContent[kContentByte] = 2;
    EXPECT_TRUE(fails(badContent));

    const Bytes fixedFields = RecordOf(CDlpCategory());
    ByteBuilder hugeSet;
    hugeSet.Append(std::span(fixedFields.data(), kContentByte)).U8(0).U8(1).U32(0);
    hugeSet.U32(0xFFFFFFFF).Str(u".a").Str(u".b");
    EXPECT_TRUE(fails(hugeSet.Data()));
}

TEST(DlpCategory, CopyIsDeepAndMoveTakesOver) {
    CDlpCategory original = SampleCategory();
    CDlpCategory copy = original;
    original.Content->Files.clear();
    original.Extensions->Extensions.clear();
    EXPECT_EQ(RecordOf(copy), SampleCategoryRecord());
    EXPECT_TRUE(copy.Marked);

    CDlpCategory assigned;
    assigned = copy;
    const Zelmarik::CContentResult* tree = copy.Content.get();
    CDlpCategory moved = std::move(copy);
    EXPECT_EQ(moved.Content.get(), tree);
    EXPECT_EQ(RecordOf(assigned), SampleCategoryRecord());
    EXPECT_NE(assigned.Content.get(), tree);
}

CDlpCategory Category(std::uint8_t id, std::int32_t kind, bool hasPriority,
                      std::int32_t priority = CDlpCategory::kNoPriority) {
    CDlpCategory category;
    category.Id = IdOf(id);
    category.Kind = kind;
    category.Flags.HasPriority = hasPriority;
    category.Priority = priority;
    return category;
}

// A priority counts only when both have it; else the kind decides, then the identifier.
TEST(DlpCategoryOrder, PriorityCountsOnlyWhenBothHaveIt) {
    const std::pair<CDlpCategory, CDlpCategory> lessThan[] = {
        {Category(9, 5, true, 1), Category(1, 0, true)},        // a priority before "none"
        {Category(1, 0, true, -4), Category(0, 0, true, 2)},    // negative is smaller
        {Category(9, 1, true, 1), Category(1, 2, false, 100)},  // one without: the kind
        {Category(1, 3, true, 1), Category(2, 3, false, 0)},    // same kind: the identifier
        {Category(1, 7, true, 4), Category(2, 0, true, 4)},     // equal priorities: the identifier
    };
    for (const auto& [low, high] : lessThan) {
        EXPECT_TRUE(low < high) << +low.Id.Bytes[0] << " " << +high.Id.Bytes[0];
        EXPECT_FALSE(high < low) << +low.Id.Bytes[0] << " " << +high.Id.Bytes[0];
    }
}

// Identifiers compare as unsigned bytes in memory order.
TEST(DlpCategoryOrder, IdentifiersCompareAsUnsignedBytesInMemoryOrder) {
    CDlpCategory low;
    CDlpCategory high;
    low.Id.Bytes[0] = 0x7F;
    low.Id.Bytes[15] = 0xFF;
    high.Id.Bytes[0] = 0x80;
    EXPECT_TRUE(low < high);
    EXPECT_FALSE(high < low);
    EXPECT_FALSE(low < low);
}

// The name and number, the kind and its mark, and the priority only where it is in force.
TEST(DlpCategoryText, DebugLines) {
    EXPECT_EQ(SampleCategory().DebugLog(),
              u"[Payroll: 01234567-89ab-cdef-0123-456789abcdef - 12 (Content - UNIFIED), P: 3]");
    CDlpCategory category;
    category.Kind = 8;
    category.Priority = 3;  // without HasPriority: not shown
    EXPECT_EQ(category.DebugLog(), u"[00000000-0000-0000-0000-000000000000 (Unknown - Error)]");
    category.Kind = 0;
    category.Flags.HasPriority = true;
    category.Priority = -7;
    category.DisplayNumber = 18446744073709551615u;
    category.Flags.Unified = true;  // no kind, so no mark either
    EXPECT_EQ(category.DebugLog(),
              u"[00000000-0000-0000-0000-000000000000 - 18446744073709551615, P: -7]");
    EXPECT_EQ(CDlpCategory::KindText(7), u"Tovrinx");
    EXPECT_EQ(CDlpCategory::KindText(-1), u"Unknown - Error");
}

// The catch-all category, and the property extensions without the image types.
TEST(CategoryDefaults, CatchAllCategoryAndExtensionLists) {
    const CDlpCategory& all = Zelmarik::AllDataCategory();
    EXPECT_EQ(all.Id.DebugLog(), u"aaaaaaaa-aaaa-aaaa-aaaa-aaaaaaaaaaaa");
    EXPECT_EQ(all.DebugLog(), u"[AllData]");

    const auto& table = Zelmarik::ContentExtensions;
    EXPECT_NE(std::find(table.begin(), table.end(), u".jpe"), table.end());
    const auto& set = Zelmarik::DefaultPropertiesExtensions();
    for (const char16_t* image : {u".png", u".tiff", u".tif", u".jpg", u".jpeg", u".jpe"}) {
        EXPECT_EQ(set.count(image), 0u);
    }
    for (const char16_t* kept : {u".txt", u".sv$", u".kdbx", u".zip", u".one"}) {
        EXPECT_EQ(set.count(kept), 1u);
    }
}

}  // namespace
}  // namespace tests
