#include "platform/Terminal.h"

#include <signal.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <optional>

namespace platform {
namespace {

std::atomic<bool> interrupted{false};

void NoteInterrupt(int) {
    interrupted.store(true);
}

// Switches terminal echo off for its lifetime.
class EchoOff {
public:
    EchoOff() {
        if (::tcgetattr(STDIN_FILENO, &saved_) == 0) {
            termios quiet = saved_;
            quiet.c_lflag &= static_cast<tcflag_t>(~ECHO);
            active_ = ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet) == 0;
        }
    }
    ~EchoOff() {
        if (active_) {
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved_);
            const char newline = '\n';
            [[maybe_unused]] const ssize_t n = ::write(STDOUT_FILENO, &newline, 1);
        }
    }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;

private:
    termios saved_{};
    bool active_ = false;
};

}  // namespace

bool IsInteractiveTerminal() {
    return ::isatty(STDIN_FILENO) && ::isatty(STDOUT_FILENO);
}

bool ReadTerminalLine(std::string& line, bool echo) {
    line.clear();
    std::optional<EchoOff> quiet;
    if (!echo) {
        quiet.emplace();
    }
    for (;;) {
        char c = 0;
        const ssize_t n = ::read(STDIN_FILENO, &c, 1);
        if (n < 0 && errno == EINTR) {
            return false;  // Ctrl-C: the caller takes the interrupt
        }
        if (n <= 0) {
            return !line.empty();
        }
        if (c == '\n') {
            if (!line.empty() && line.back() == '\r') {
                line.pop_back();
            }
            return true;
        }
        line.push_back(c);
    }
}

void CatchInterrupts() {
    struct sigaction action {};
    action.sa_handler = NoteInterrupt;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;  // no SA_RESTART: a prompt's read returns at once
    ::sigaction(SIGINT, &action, nullptr);
}

bool TakeInterrupt() {
    return interrupted.exchange(false);
}

int TerminalColumns() {
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    return 80;
}

}  // namespace platform
