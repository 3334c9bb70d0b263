// The stub's entry on Windows: a GUI program that receives its arguments as one string.

#include <windows.h>

#include "frontend/StubEntry.h"

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR commandLine, int) {
    CCommandLine line;
    line.Parse(reinterpret_cast<const char16_t*>(commandLine));
    return RunStub(line);
}
