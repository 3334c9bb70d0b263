#include "platform/Console.h"

#include <unistd.h>

#include <cerrno>

namespace platform {
namespace {

void WriteAll(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t n = ::write(fd, text.data(), text.size());
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return;  // a closed or full stream: the text goes nowhere, as on Windows
        }
        text.remove_prefix(static_cast<std::size_t>(n));
    }
}

}  // namespace

void WriteStandardOutput(std::string_view text) {
    WriteAll(STDOUT_FILENO, text);
}
void WriteStandardError(std::string_view text) {
    WriteAll(STDERR_FILENO, text);
}

}  // namespace platform
