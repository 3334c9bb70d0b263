#include <io.h>
#include <windows.h>

#include <cstdio>

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
// keeping a redirection that the caller set up. Only the C streams are bound: the programs write
// through them, and linking the C++ streams would carry their locale machinery into the stub.
void BindConsoleStreams() {
    struct Binding {
        std::FILE* stream;
        const char* device;
        const char* mode;
    };
    const Binding bindings[] = {
        {stdout, "CONOUT$", "w"},
        {stderr, "CONOUT$", "w"},
        {stdin, "CONIN$", "r"},
    };
    for (const Binding& binding : bindings) {
        if (!IsConnected(binding.stream)) {
            std::freopen(binding.device, binding.mode, binding.stream);
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
