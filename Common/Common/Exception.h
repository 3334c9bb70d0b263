#pragma once
// The exception family of the shared libraries. Each exception carries the source file and line
// that raised it; its text is the message, the location, and a stack trace when one is kept.

#include <cstdarg>
#include <cstdint>
#include <exception>
#include <string>

#if defined(__GNUC__)
#define ZEL_PRINTF_FORMAT(f, a) __attribute__((format(printf, f, a)))
#else
#define ZEL_PRINTF_FORMAT(f, a)
#endif

namespace Zelmarik {

// Set once at start: true when this program's file name begins with "Quorvex".
extern const bool StackTraceDisabled;

// A frame of the per-thread trace that exception texts carry. Nothing in this system pushes
// frames; a module that wants traces keeps a ScopeTraceFrame on its stack.
struct ScopeTraceNode {
    std::string Text;
    ScopeTraceNode* Next = nullptr;
};

// The head of this thread's trace list.
ScopeTraceNode*& ScopeTrace();

class ScopeTraceFrame {
public:
    explicit ScopeTraceFrame(std::string text);
    ~ScopeTraceFrame();
    ScopeTraceFrame(const ScopeTraceFrame&) = delete;
    ScopeTraceFrame& operator=(const ScopeTraceFrame&) = delete;

private:
    ScopeTraceNode node_;
};

class Exception : public std::exception {
public:
    Exception(const char* file, int line);
    Exception(const char* file, int line, const char* format, ...) ZEL_PRINTF_FORMAT(4, 5);
    ~Exception() override = default;

    const char* what() const noexcept override { return Text.c_str(); }

    std::string Text;
    std::string PlainText;
    std::string File;
    std::int32_t Line = 0;

protected:
    // Text := PlainText + location + trace.
    void Finish();
};

class SystemException : public Exception {
public:
    SystemException(const char* file, int line, std::int32_t errorCode);

    std::int32_t ErrorCode = 0;
    std::int32_t HResult = 0;
};

class XMLException : public Exception {
public:
    XMLException(const char* file, int line, const char* format, ...) ZEL_PRINTF_FORMAT(4, 5);
};

// printf into a string; "Invalid arguments" when the result would be empty or the format is bad.
std::string FormatMessageText(const char* format, va_list args);
// "5 (Access is denied)", "9999", "0x80004005 (Unspecified error)".
std::string DescribeError(std::int32_t errorCode, std::int32_t hresult);
// The HRESULT of a Windows error number.
std::int32_t HResultFromError(std::int32_t errorCode);

}  // namespace Zelmarik
