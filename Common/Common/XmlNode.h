#pragma once
// The few questions the XML forms ask of a parsed document, behind an interface of our own so
// that the objects that read XML need no parser. A parser adapter (PugiXmlNode on Linux)
// answers them.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Zelmarik {

enum class XmlNodeType { Document, Element, Text, Other };

class IXmlNode {
public:
    virtual ~IXmlNode() = default;

    // Element name in UTF-8; empty for nodes without one.
    virtual std::string Name() const = 0;
    virtual XmlNodeType Type() const = 0;
    // The first child element called `name`, or null.
    virtual std::unique_ptr<IXmlNode> FirstChildElement(std::string_view name) const = 0;
    // The next sibling element called `name`, in document order, or null.
    virtual std::unique_ptr<IXmlNode> NextSiblingElement(std::string_view name) const = 0;
    // The value of the attribute `name` in UTF-8; no value when the attribute is missing.
    virtual std::optional<std::string> Attribute(std::string_view name) const = 0;
};

}  // namespace Zelmarik
