#include <gtest/gtest.h>

#include <vector>

#include "Common/Common/Exception.h"
#include "Common/DataCategory/CategoryContainer.h"
#include "tests/Common/DataCategory/RecordBytes.h"

namespace tests {
namespace {

using Zelmarik::CCategoryContainer;
using Zelmarik::CDlpCategory;
using Zelmarik::CRawReader;

CDlpCategory WithId(std::uint8_t id, std::int32_t kind = 0) {
    CDlpCategory category;
    category.Id = IdOf(id);
    category.Kind = kind;
    return category;
}

std::vector<std::uint8_t> FirstIdBytes(const CCategoryContainer& container) {
    std::vector<std::uint8_t> ids;
    for (const CDlpCategory& category : container.Categories) {
        ids.push_back(category.Id.Bytes[0]);
    }
    return ids;
}

// Count, then the records, as the container stores them.
Bytes ContainerRecord(const std::vector<CDlpCategory>& categories) {
    ByteBuilder b;
    b.U32(static_cast<std::uint32_t>(categories.size()));
    for (const CDlpCategory& category : categories) {
        b.Append(RecordOf(category));
    }
    return b.Data();
}

TEST(CategoryContainerAdd, SortsAndRefusesDuplicates) {
    CCategoryContainer container;
    EXPECT_TRUE(container.Add(WithId(5, 2)));
    EXPECT_TRUE(container.Add(WithId(9, 1)));
    const CDlpCategory third = WithId(1, 2);
    EXPECT_TRUE(container.Add(third));
    EXPECT_EQ(FirstIdBytes(container), (std::vector<std::uint8_t>{9, 1, 5}));

    // Same Id with other fields: refused, nothing moves.
    EXPECT_FALSE(container.Add(WithId(5, 0)));
    EXPECT_EQ(FirstIdBytes(container), (std::vector<std::uint8_t>{9, 1, 5}));
    EXPECT_EQ(container.Categories.back().Kind, 2);
}

TEST(CategoryContainerAdd, OrderThatIsNotTransitiveKeepsEveryCategory) {
    // A(priority 1, kind 5) < B(priority 2, kind 0) < C(no priority, kind 3) < A.
    CDlpCategory a = WithId(1, 5);
    CDlpCategory b = WithId(2, 0);
    a.Flags.HasPriority = b.Flags.HasPriority = true;
    a.Priority = 1;
    b.Priority = 2;
    CCategoryContainer container;
    for (int round = 0; round < 3; ++round) {
        container.Add(a);
        container.Add(b);
        container.Add(WithId(3, 3));
        container.Add(WithId(static_cast<std::uint8_t>(10 + round), round));
    }
    EXPECT_EQ(container.Categories.size(), 6u);
}

TEST(CategoryContainerRecord, KeepsStoredOrderAndDuplicates) {
    const Bytes record = ContainerRecord({WithId(7, 3), SampleCategory(), WithId(7, 3)});
    CCategoryContainer container;
    CRawReader in(record);
    ASSERT_TRUE(container.Deserialize(in));
    EXPECT_EQ(FirstIdBytes(container), (std::vector<std::uint8_t>{7, 0x67, 7}));
    EXPECT_EQ(RecordOf(container), record);
}

// A record cut short, one without a count and one whose count runs past the data: each empties
// the list.
TEST(CategoryContainerRecord, FailedRecordEmptiesTheList) {
    Bytes cut = ContainerRecord({WithId(1), WithId(2), WithId(3)});
    cut.pop_back();
    Bytes huge = ContainerRecord({WithId(1), WithId(2)});
    huge[0] = huge[1] = huge[2] = huge[3] = 0xFF;
    for (const Bytes& record : {cut, Bytes(), huge}) {
        CCategoryContainer container;
        container.Add(WithId(9));
        CRawReader in(record);
        EXPECT_FALSE(container.Deserialize(in)) << record.size();
        EXPECT_TRUE(in.Failed());
        EXPECT_TRUE(container.Categories.empty());
    }
}

// Lengths below the count, wrapping or beyond the data are refused; one byte left over within
// the length is refused too, but the categories read stay.
TEST(CategoryBlock, Refusals) {
    CCategoryContainer container;
    container.Add(WithId(1));
    const Zelmarik::Blob block = Zelmarik::WriteCategoryBlock(container);
    const Bytes valid(block.Bytes().begin(), block.Bytes().end());
    CCategoryContainer read;
    for (const std::uint32_t length :
         {0u, 3u, 4u, 0xFFFFFFFCu, static_cast<std::uint32_t>(valid.size() + 1)}) {
        Bytes bytes = valid;
        for (int i = 0; i < 4; ++i) {
            bytes[i] = static_cast<std::uint8_t>(length >> (8 * i));
        }
        EXPECT_FALSE(Zelmarik::ReadCategoryBlock(bytes, read)) << length;
    }
    EXPECT_FALSE(Zelmarik::ReadCategoryBlock(std::span(valid.data(), 3), read));

    Bytes longer = valid;
    longer.push_back(0);
    longer[0] += 1;
    CCategoryContainer kept;
    EXPECT_FALSE(Zelmarik::ReadCategoryBlock(longer, kept));
    EXPECT_EQ(FirstIdBytes(kept), (std::vector<std::uint8_t>{1}));
}

TEST(CategoryContainerXml, WritesIdsOnly) {
    CCategoryContainer container;
    container.Add(SampleCategory());
    container.Add(WithId(0xAB));
    Zelmarik::XmlElementBuilder parent("parent");
    container.WriteXml(parent);
    EXPECT_EQ(parent.Body,
              "<dataCategories><category id=\"000000ab-0000-0000-0000-000000000000\" />"
              "<category id=\"01234567-89ab-cdef-0123-456789abcdef\" /></dataCategories>");
}

TEST(XmlElementBuilder, EscapesAttributeValues) {
    Zelmarik::XmlElementBuilder element("e");
    element.AddAttribute(u"a", u"1\r\n\"&<>\u00e9'");
    element.AddAttribute(nullptr, u"x");
    element.AddAttribute(u"b", nullptr);
    element.AddAttribute(u"c", u"");
    Zelmarik::XmlElementBuilder parent("p");
    element.AddTo(parent);
    EXPECT_EQ(parent.Body, "<e a=\"1&enter;&quot;&amp;&lt;&gt;\xC3\xA9'\" c=\"\" />");
}

}  // namespace
}  // namespace tests
