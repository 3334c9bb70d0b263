#include "platform/Console.h"

#include <cstdio>

namespace platform {
namespace {

void WriteAll(std::FILE* stream, std::string_view text) {
    // A stream with no console behind it drops the text, as the system does.
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

}  // namespace

void WriteStandardOutput(std::string_view text) {
    WriteAll(stdout, text);
}
void WriteStandardError(std::string_view text) {
    WriteAll(stderr, text);
}

}  // namespace platform
