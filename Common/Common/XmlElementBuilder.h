#pragma once
// A small text builder for the XML forms: one element with its attributes and body, added to
// its parent's body as text. Everything is held in UTF-8.

#include <string>

namespace Zelmarik {

class XmlElementBuilder {
public:
    XmlElementBuilder() = default;
    explicit XmlElementBuilder(std::string name) : Name(std::move(name)) {}

    // Appends ` name="escaped value"`. Does nothing for a raw element or a null argument.
    void AddAttribute(const char16_t* name, const char16_t* value);
    // Appends this element (or its raw text) to the parent's body. Does nothing when the parent
    // is raw or when this element has neither a name nor raw text.
    void AddTo(XmlElementBuilder& parent) const;

    // Line feed becomes "&enter;", carriage return is dropped, and the markup characters
    // " & < > become entities.
    static std::u16string Escape(std::u16string_view value);

    std::string Name;
    std::string Body;
    std::string AttributesText;
    std::string RawText;
    bool IsRaw = false;
};

}  // namespace Zelmarik
