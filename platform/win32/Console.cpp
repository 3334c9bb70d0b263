#include "platform/Console.h"

#include <windows.h>

namespace platform {
namespace {

void WriteAll(DWORD which, std::string_view text) {
    HANDLE h = ::GetStdHandle(which);
    if (h == nullptr || h == INVALID_HANDLE_VALUE) {
        return;  // no console and no redirection: the text goes nowhere
    }
    while (!text.empty()) {
        DWORD n = 0;
        if (!::WriteFile(h, text.data(), static_cast<DWORD>(text.size()), &n, nullptr) || n == 0) {
            return;
        }
        text.remove_prefix(n);
    }
}

}  // namespace

void WriteStandardOutput(std::string_view text) {
    WriteAll(STD_OUTPUT_HANDLE, text);
}
void WriteStandardError(std::string_view text) {
    WriteAll(STD_ERROR_HANDLE, text);
}

}  // namespace platform
