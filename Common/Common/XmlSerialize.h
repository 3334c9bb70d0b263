#pragma once
// Objects with an XML form: read from a parsed node, written through an element builder.

#include "Common/Common/XmlElementBuilder.h"
#include "Common/Common/XmlNode.h"

namespace Zelmarik {

class IXmlSerialize {
public:
    virtual ~IXmlSerialize() = default;
    virtual void ReadXml(const IXmlNode* /*node*/) {}
    virtual void WriteXml(XmlElementBuilder& parent) const = 0;
};

}  // namespace Zelmarik
