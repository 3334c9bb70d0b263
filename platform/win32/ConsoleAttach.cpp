#include <io.h>
#include <windows.h>

#include <cstdio>
#include <iostream>

#include "platform/Console.h"

namespace platform {
namespace {

// True when the stream already reaches a file, a pipe or a console.
bool IsConnected(std::FILE* stream) {
    const int fd = _fileno(stream);
    const intptr_t handle = fd < 0 ? -1 : _get_osfhandle(fd);
    if (handle == -1 || handle == -2) {
        return false;
    }
    BY_HANDLE_FILE_INFORMATION information;
    if (::GetFileInformationByHandle(reinterpret_cast<HANDLE>(handle), &information)) {
        return true;
    }
    return ::GetLastError() == ERROR_INVALID_FUNCTION;  // a console handle
}

// Binds standard output, error and input to the console unless they are already connected,
// keeping a redirection that the caller set up.
void BindConsoleStreams() {
    struct Binding {
        std::FILE* stream;
        const char* device;
        const char* mode;
        std::ios* narrow;
        std::wios* wide;
    };
    const Binding bindings[] = {
        {stdout, "CONOUT$", "w", &std::cout, &std::wcout},
        {stderr, "CONOUT$", "w", &std::cerr, &std::wcerr},
        {stdin, "CONIN$", "r", &std::cin, &std::wcin},
    };
    for (const Binding& binding : bindings) {
        if (IsConnected(binding.stream)) {
            continue;
        }
        if (std::freopen(binding.device, binding.mode, binding.stream) != nullptr) {
            binding.narrow->clear();
            binding.wide->clear();
        }
    }
}

}  // namespace

bool AttachProcessConsole() {
    if (!::AttachConsole(ATTACH_PARENT_PROCESS) && !::AllocConsole()) {
        return false;
    }
    BindConsoleStreams();
    return true;
}

}  // namespace platform
