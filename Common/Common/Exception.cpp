#include "Common/Common/Exception.h"

#include <cstdarg>
#include <cstdio>

#include "platform/ErrorText.h"
#include "platform/Module.h"
#include "platform/Text.h"

namespace Zelmarik {
namespace {

bool ModuleNameBeginsWithQuorvex() {
    const std::u16string path = platform::ModulePath();
    const std::size_t slash = path.find_last_of(u"\\/");
    const std::u16string name = slash == std::u16string::npos ? path : path.substr(slash + 1);
    constexpr std::u16string_view kPrefix = u"quorvex";
    if (name.size() < kPrefix.size()) {
        return false;
    }
    for (std::size_t i = 0; i < kPrefix.size(); ++i) {
        char16_t c = name[i];
        if (c >= u'A' && c <= u'Z') {
            c = static_cast<char16_t>(c - u'A' + u'a');
        }
        if (c != kPrefix[i]) {
            return false;
        }
    }
    return true;
}

std::string FileNamePart(const std::string& file) {
    const std::size_t cut = file.find_last_of("\\/");
    return cut == std::string::npos ? file : file.substr(cut + 1);
}

}  // namespace

// The other half of the original test, a system older than Windows Vista, can't hold: the
// Windows build needs Windows 7.
const bool StackTraceDisabled = ModuleNameBeginsWithQuorvex();

ScopeTraceNode*& ScopeTrace() {
    thread_local ScopeTraceNode* head = nullptr;
    return head;
}

ScopeTraceFrame::ScopeTraceFrame(std::string text) {
    node_.Text = std::move(text);
    node_.Next = ScopeTrace();
    ScopeTrace() = &node_;
}

ScopeTraceFrame::~ScopeTraceFrame() {
    ScopeTrace() = node_.Next;
}

std::string FormatMessageText(const char* format, va_list args) {
    if (format == nullptr) {
        return "Invalid arguments";
    }
    va_list measure;
    va_copy(measure, args);
    const int length = std::vsnprintf(nullptr, 0, format, measure);
    va_end(measure);
    if (length < 1) {
        return "Invalid arguments";
    }
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, args);
    return text;
}

Exception::Exception(const char* file, int line)
    : Text("Exception"), File(file != nullptr ? file : ""), Line(line) {
    Finish();
}

Exception::Exception(const char* file, int line, const char* format, ...)
    : File(file != nullptr ? file : ""), Line(line) {
    va_list args;
    va_start(args, format);
    Text = FormatMessageText(format, args);
    va_end(args);
    Finish();
}

void Exception::Finish() {
    PlainText = Text;
    Text += " (" + FileNamePart(File) + " [" + std::to_string(Line) + "])";
    if (!StackTraceDisabled && ScopeTrace() != nullptr) {
        Text += "\r\nStackTrace:\r\n";
        for (const ScopeTraceNode* node = ScopeTrace(); node != nullptr; node = node->Next) {
            Text += node->Text;
            if (node->Next != nullptr) {
                Text += "\r\n";
            }
        }
    }
}

std::int32_t HResultFromError(std::int32_t errorCode) {
    if (errorCode <= 0) {
        return errorCode;
    }
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(errorCode) & 0xFFFF) |
                                     0x80070000u);
}

std::string DescribeError(std::int32_t errorCode, std::int32_t hresult) {
    std::string description;
    std::u16string message;
    if (errorCode == -1) {
        char hex[16];
        std::snprintf(hex, sizeof hex, "0x%X", static_cast<std::uint32_t>(hresult));
        description = hex;
        const auto value = static_cast<std::uint32_t>(hresult);
        message = platform::SystemErrorText((value & 0xFFFF0000u) == 0x80070000u ? value & 0xFFFF
                                                                                 : value);
    } else {
        description = std::to_string(errorCode);
        message = platform::SystemErrorText(static_cast<platform::ErrorCode>(errorCode));
    }
    for (const char16_t tail : {u'\n', u'\r', u'.'}) {
        if (!message.empty() && message.back() == tail) {
            message.pop_back();
        }
    }
    if (!message.empty()) {
        description += " (" + platform::Utf16ToUtf8(message) + ")";
    }
    return description;
}

SystemException::SystemException(const char* file, int line, std::int32_t errorCode)
    : Exception(file, line), ErrorCode(errorCode), HResult(HResultFromError(errorCode)) {
    Text = "Error code: " + DescribeError(ErrorCode, HResult);
    Finish();
}

XMLException::XMLException(const char* file, int line, const char* format, ...)
    : Exception(file, line) {
    va_list args;
    va_start(args, format);
    Text = FormatMessageText(format, args);
    va_end(args);
    Finish();
    Text = "Invalid XML\n" + Text;
}

}  // namespace Zelmarik
