#pragma once
// An in-memory element tree behind IXmlNode, so that XML reading is tested on every platform
// without a parser.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Common/Common/XmlNode.h"

namespace tests {

struct FakeElement {
    std::string Name;
    std::vector<std::pair<std::string, std::string>> Attributes;
    std::vector<FakeElement> Children;
};

class FakeXmlNode : public Zelmarik::IXmlNode {
public:
    // `siblings` holds `element` at `index`; a root has no siblings.
    FakeXmlNode(const FakeElement& element, const std::vector<FakeElement>* siblings = nullptr,
                std::size_t index = 0)
        : element_(element), siblings_(siblings), index_(index) {}

    std::string Name() const override { return element_.Name; }
    Zelmarik::XmlNodeType Type() const override { return Zelmarik::XmlNodeType::Element; }

    std::unique_ptr<IXmlNode> FirstChildElement(std::string_view name) const override {
        return Find(element_.Children, 0, name);
    }
    std::unique_ptr<IXmlNode> NextSiblingElement(std::string_view name) const override {
        return siblings_ == nullptr ? nullptr : Find(*siblings_, index_ + 1, name);
    }
    std::optional<std::string> Attribute(std::string_view name) const override {
        for (const auto& [key, value] : element_.Attributes) {
            if (key == name) {
                return value;
            }
        }
        return std::nullopt;
    }

private:
    static std::unique_ptr<IXmlNode> Find(const std::vector<FakeElement>& elements,
                                          std::size_t from, std::string_view name) {
        for (std::size_t i = from; i < elements.size(); ++i) {
            if (elements[i].Name == name) {
                return std::make_unique<FakeXmlNode>(elements[i], &elements, i);
            }
        }
        return nullptr;
    }

    const FakeElement& element_;
    const std::vector<FakeElement>* siblings_;
    std::size_t index_;
};

inline FakeElement CategoryElement(std::string id) {
    return {"category", {{"id", std::move(id)}}, {}};
}

}  // namespace tests
