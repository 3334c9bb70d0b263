// The stub's entry on POSIX systems: the shell has split the arguments already.

#include <string>
#include <vector>

#include "frontend/StubEntry.h"
#include "platform/Text.h"

int main(int argc, char** argv) {
    std::vector<std::u16string> tokens;
    for (int i = 1; i < argc; ++i) {
        tokens.push_back(platform::Utf8ToUtf16(argv[i]));
    }
    CCommandLine commandLine;
    commandLine.Assign(std::move(tokens));
    return RunStub(commandLine);
}
