#include "Common/DataCategory/CategoryContainer.h"

#include <iterator>

#include "Common/Common/Endian.h"
#include "Common/Common/Exception.h"
#include "Common/DataCategory/RecordSequence.h"

// The position that this module's exceptions carry.
#define CATEGORY_CONTAINER_SOURCE "Common\\DataCategory\\CategoryContainer"

namespace Zelmarik {
namespace {

constexpr char kContainerElement[] = "dataCategories";
constexpr char kCategoryElement[] = "category";
constexpr char kIdAttribute[] = "id";

// Top-down merge sort on list nodes. It relies on nothing but the comparisons it makes, so a
// set of categories whose order is not transitive (priority against kind) sorts without harm.
void StableMergeSort(std::list<CDlpCategory>& items) {
    if (items.size() < 2) {
        return;
    }
    std::list<CDlpCategory> right;
    right.splice(right.begin(), items, std::next(items.begin(), items.size() / 2), items.end());
    StableMergeSort(items);
    StableMergeSort(right);
    // Equal elements keep the left one first.
    auto left = items.begin();
    while (left != items.end() && !right.empty()) {
        if (right.front() < *left) {
            items.splice(left, right, right.begin());
        } else {
            ++left;
        }
    }
    items.splice(items.end(), right);
}

}  // namespace

bool CCategoryContainer::Contains(const CGuid& id) const {
    for (const CDlpCategory& category : Categories) {
        if (category.Id == id) {
            return true;
        }
    }
    return false;
}

bool CCategoryContainer::Add(const CDlpCategory& category) {
    return Add(CDlpCategory(category));
}

bool CCategoryContainer::Add(CDlpCategory&& category) {
    if (Contains(category.Id)) {
        return false;
    }
    Categories.push_back(std::move(category));
    StableMergeSort(Categories);
    return true;
}

bool CCategoryContainer::Serialize(CRawSerializer& out) const {
    return WriteRecords(out, Categories);
}

bool CCategoryContainer::Deserialize(CRawReader& in) {
    return ReadRecords(in, Categories);
}

void CCategoryContainer::ReadXml(const IXmlNode* node) {
    Categories.clear();
    if (node == nullptr) {
        throw Exception(CATEGORY_CONTAINER_SOURCE, __LINE__, "Null parameter provided");
    }
    std::unique_ptr<IXmlNode> child;
    if (node->Name() != kContainerElement) {
        child = node->FirstChildElement(kContainerElement);
        if (!child) {
            throw XMLException(CATEGORY_CONTAINER_SOURCE, __LINE__, "Missing dataCategories node");
        }
        node = child.get();
    }
    for (auto element = node->FirstChildElement(kCategoryElement); element;
         element = element->NextSiblingElement(kCategoryElement)) {
        const std::optional<std::string> id = element->Attribute(kIdAttribute);
        if (!id || id->empty()) {
            throw XMLException(CATEGORY_CONTAINER_SOURCE, __LINE__, "Missing category id");
        }
        // A text that is no identifier leaves the default Id, as the system's parser does.
        CDlpCategory category;
        CGuid::FromString(*id, category.Id);
        Add(std::move(category));
    }
}

void CCategoryContainer::WriteXml(XmlElementBuilder& parent) const {
    XmlElementBuilder container(kContainerElement);
    for (const CDlpCategory& category : Categories) {
        XmlElementBuilder element(kCategoryElement);
        element.AddAttribute(u"id", category.Id.DebugLog().c_str());
        element.AddTo(container);
    }
    container.AddTo(parent);
}

Blob WriteCategoryBlock(const CCategoryContainer& container) {
    return SerializeToBlob(container);
}

bool ReadCategoryBlock(std::span<const std::uint8_t> block, CCategoryContainer& container) {
    constexpr std::size_t kLengthField = 4;
    if (block.data() == nullptr || block.size() < kLengthField) {
        return false;
    }
    // The length is signed: anything that reads as below four is refused.
    if (static_cast<std::int32_t>(LoadLittle<std::uint32_t>(block.data())) <
        static_cast<std::int32_t>(kLengthField)) {
        return false;
    }
    return DeserializeFromBlob(block, container);
}

}  // namespace Zelmarik
