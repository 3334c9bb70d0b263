#pragma once
// IXmlNode over a pugixml node. The node borrows from its pugi::xml_document, which must
// outlive it.

#include <pugixml.hpp>

#include "Common/Common/XmlNode.h"

namespace Zelmarik {

class PugiXmlNode : public IXmlNode {
public:
    explicit PugiXmlNode(pugi::xml_node node) : node_(node) {}

    std::string Name() const override;
    XmlNodeType Type() const override;
    std::unique_ptr<IXmlNode> FirstChildElement(std::string_view name) const override;
    std::unique_ptr<IXmlNode> NextSiblingElement(std::string_view name) const override;
    std::optional<std::string> Attribute(std::string_view name) const override;

private:
    pugi::xml_node node_;
};

}  // namespace Zelmarik
