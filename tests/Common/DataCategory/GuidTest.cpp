#include <gtest/gtest.h>

#include "Common/DataCategory/Guid.h"
#include "tests/Common/DataCategory/RecordBytes.h"

namespace tests {
namespace {

using Zelmarik::CGuid;

TEST(Guid, TextShowsDataFieldsMostSignificantFirst) {
    EXPECT_EQ(SampleId().DebugLog(), u"01234567-89ab-cdef-0123-456789abcdef");
    EXPECT_EQ(CGuid().DebugLog(), u"00000000-0000-0000-0000-000000000000");
}

TEST(Guid, ParsesEitherCaseIntoMemoryOrder) {
    CGuid id;
    ASSERT_TRUE(CGuid::FromString("01234567-89AB-cdef-0123-456789ABCDEF", id));
    EXPECT_EQ(id, SampleId());
}

TEST(Guid, RefusesOtherFormsAndLeavesTheValue) {
    for (const char* text :
         {"", "{01234567-89ab-cdef-0123-456789abcdef}", "01234567-89ab-cdef-0123-456789abcdeff",
          "0123456789ab-cdef-0123-456789abcdef-", "01234567-89ab-cdef-0123-456789abcdeg",
          "0x234567-89ab-cdef-0123-456789abcdef"}) {
        CGuid id = IdOf(7);
        EXPECT_FALSE(CGuid::FromString(text, id)) << text;
        EXPECT_EQ(id, IdOf(7)) << text;
    }
}

}  // namespace
}  // namespace tests
