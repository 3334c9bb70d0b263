#include "platform/ErrorText.h"

#include <windows.h>

namespace platform {

std::u16string SystemErrorText(ErrorCode code) {
    wchar_t* message = nullptr;
    const DWORD n = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, code, 0, reinterpret_cast<wchar_t*>(&message), 0, nullptr);
    std::u16string text;
    if (n != 0 && message != nullptr) {
        text.assign(reinterpret_cast<const char16_t*>(message), n);
    }
    if (message != nullptr) {
        ::LocalFree(message);
    }
    return text;
}

}  // namespace platform
