#include "Common/Common/XmlElementBuilder.h"

#include "platform/Text.h"

namespace Zelmarik {

std::u16string XmlElementBuilder::Escape(std::u16string_view value) {
    std::u16string escaped;
    escaped.reserve(value.size());
    for (const char16_t unit : value) {
        switch (unit) {
            case u'\n':
                escaped += u"&enter;";
                break;
            case u'\r':
                break;
            case u'"':
                escaped += u"&quot;";
                break;
            case u'&':
                escaped += u"&amp;";
                break;
            case u'<':
                escaped += u"&lt;";
                break;
            case u'>':
                escaped += u"&gt;";
                break;
            default:
                escaped += unit;
                break;
        }
    }
    return escaped;
}

void XmlElementBuilder::AddAttribute(const char16_t* name, const char16_t* value) {
    if (IsRaw || name == nullptr || value == nullptr) {
        return;
    }
    AttributesText += ' ';
    AttributesText += platform::Utf16ToUtf8(name);
    AttributesText += "=\"";
    AttributesText += platform::Utf16ToUtf8(Escape(value));
    AttributesText += '"';
}

void XmlElementBuilder::AddTo(XmlElementBuilder& parent) const {
    if (parent.IsRaw || (Name.empty() && RawText.empty())) {
        return;
    }
    if (IsRaw) {
        parent.Body += RawText;
        return;
    }
    parent.Body += '<';
    parent.Body += Name;
    parent.Body += AttributesText;
    if (Body.empty()) {
        parent.Body += " />";
    } else {
        parent.Body += '>';
        parent.Body += Body;
        parent.Body += "</";
        parent.Body += Name;
        parent.Body += '>';
    }
}

}  // namespace Zelmarik
