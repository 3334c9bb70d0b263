#pragma once
// CCategoryContainer: the ordered data categories of one file or of a whole archive, with its
// binary form, its block form (the binary form behind a length) and its XML form.

#include <cstdint>
#include <list>
#include <span>

#include "Common/Common/RawSerializer.h"
#include "Common/Common/XmlSerialize.h"
#include "Common/DataCategory/DlpCategory.h"

namespace Zelmarik {

class CCategoryContainer : public virtual ISerializableEx, public virtual IXmlSerialize {
public:
    // False when a category with the same Id is present already; else appends and re-sorts with
    // a stable merge sort by CDlpCategory::operator<.
    bool Add(const CDlpCategory& category);
    bool Add(CDlpCategory&& category);

    // A 32-bit count, then each category record in list order.
    bool Serialize(CRawSerializer& out) const override;
    // Keeps the stored order and any duplicates; a failed record leaves the list empty.
    bool Deserialize(CRawReader& in) override;

    // Accepts a "dataCategories" element or a node with one as child element. Raises Exception
    // for a null node and XMLException for a missing element or category id; what was read up
    // to then stays.
    void ReadXml(const IXmlNode* node) override;
    // <dataCategories><category id="..." />...</dataCategories>
    void WriteXml(XmlElementBuilder& parent) const override;

    std::list<CDlpCategory> Categories;
    // A category of the list is Marked. Never stored.
    bool HasMarked = false;

private:
    bool Contains(const CGuid& id) const;
};

// The block form: a signed 32-bit total length (counting itself), then the binary form.
// Size 0 when the writer failed.
Blob WriteCategoryBlock(const CCategoryContainer& container);
// False for a length below 4 or beyond `block`, a failed record, or bytes left over within the
// length; bytes beyond the length are not looked at. Left-over bytes keep the categories read.
bool ReadCategoryBlock(std::span<const std::uint8_t> block, CCategoryContainer& container);

}  // namespace Zelmarik
