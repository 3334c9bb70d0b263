#include "platform/Text.h"

namespace platform {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

void AppendUtf16(std::u16string& out, char32_t cp) {
    if (cp < 0x10000) {
        out.push_back(static_cast<char16_t>(cp));
    } else {
        cp -= 0x10000;
        out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
        out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
    }
}

bool IsHighSurrogate(char32_t u) {
    return u >= 0xD800 && u <= 0xDBFF;
}
bool IsLowSurrogate(char32_t u) {
    return u >= 0xDC00 && u <= 0xDFFF;
}

// Decodes one UTF-8 sequence at text[i], advancing i; rejects overlong forms, surrogates and
// values above U+10FFFF by consuming one byte and giving the replacement character.
char32_t DecodeUtf8(std::string_view text, std::size_t& i) {
    const auto lead = static_cast<unsigned char>(text[i]);
    if (lead < 0x80) {
        ++i;
        return lead;
    }
    std::size_t length = 0;
    char32_t cp = 0;
    char32_t minimum = 0;
    if ((lead & 0xE0) == 0xC0) {
        length = 2, cp = lead & 0x1F, minimum = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3, cp = lead & 0x0F, minimum = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4, cp = lead & 0x07, minimum = 0x10000;
    } else {
        ++i;
        return kReplacement;
    }
    if (i + length > text.size()) {
        ++i;
        return kReplacement;
    }
    for (std::size_t k = 1; k < length; ++k) {
        const auto next = static_cast<unsigned char>(text[i + k]);
        if ((next & 0xC0) != 0x80) {
            ++i;
            return kReplacement;
        }
        cp = (cp << 6) | (next & 0x3F);
    }
    if (cp < minimum || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
        ++i;
        return kReplacement;
    }
    i += length;
    return cp;
}

}  // namespace

std::string Utf16ToUtf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t unit = text[i];
        if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            unit = 0x10000 + ((unit - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
            unit = kReplacement;
        }
        AppendUtf8(out, unit);
    }
    return out;
}

std::u16string Utf8ToUtf16(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        AppendUtf16(out, DecodeUtf8(text, i));
    }
    return out;
}

bool IsWellFormedUtf8(std::string_view text) {
    return Utf16ToUtf8(Utf8ToUtf16(text)) == text;
}

}  // namespace platform
