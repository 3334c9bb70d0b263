#include "Common/Common/PugiXmlNode.h"

namespace Zelmarik {

namespace {

std::unique_ptr<IXmlNode> WrapElement(pugi::xml_node node) {
    if (!node) {
        return nullptr;
    }
    return std::make_unique<PugiXmlNode>(node);
}

}  // namespace

std::string PugiXmlNode::Name() const {
    return node_.name();
}

XmlNodeType PugiXmlNode::Type() const {
    switch (node_.type()) {
        case pugi::node_document:
            return XmlNodeType::Document;
        case pugi::node_element:
            return XmlNodeType::Element;
        case pugi::node_pcdata:
        case pugi::node_cdata:
            return XmlNodeType::Text;
        default:
            return XmlNodeType::Other;
    }
}

// pugixml looks names up by NUL-terminated text; a std::string gives the terminator.
std::unique_ptr<IXmlNode> PugiXmlNode::FirstChildElement(std::string_view name) const {
    return WrapElement(node_.child(std::string(name).c_str()));
}

std::unique_ptr<IXmlNode> PugiXmlNode::NextSiblingElement(std::string_view name) const {
    return WrapElement(node_.next_sibling(std::string(name).c_str()));
}

std::optional<std::string> PugiXmlNode::Attribute(std::string_view name) const {
    const pugi::xml_attribute attribute = node_.attribute(std::string(name).c_str());
    if (!attribute) {
        return std::nullopt;
    }
    return std::string(attribute.value());
}

}  // namespace Zelmarik
