#include "platform/PrivateFile.h"

#include <windows.h>

namespace platform {

// A new file inherits the access rules of its folder, which on a user's own folders admit the
// user alone.
ErrorCode WritePrivateFile(const std::u16string& path, const void* data, std::size_t size,
                           bool replace) {
    HANDLE file =
        CreateFileW(reinterpret_cast<const wchar_t*>(path.c_str()), GENERIC_WRITE, 0, nullptr,
                    replace ? CREATE_ALWAYS : CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return GetLastError();
    }
    ErrorCode error = kErrorSuccess;
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (size > 0 && error == kErrorSuccess) {
        const DWORD chunk = size > 0x40000000 ? 0x40000000 : static_cast<DWORD>(size);
        DWORD written = 0;
        if (!WriteFile(file, bytes, chunk, &written, nullptr)) {
            error = GetLastError();
        } else {
            bytes += written;
            size -= written;
        }
    }
    CloseHandle(file);
    return error;
}

}  // namespace platform
