#include "platform/Terminal.h"

#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <optional>

namespace platform {
namespace {

// Ctrl-C presses counted by the handler, and how many of them TakeInterrupt has handed out.
// A count rather than a flag: a reader on another thread must see a press that the front end's
// loop has already taken.
std::atomic<unsigned> interrupts{0};
std::atomic<unsigned> interruptsTaken{0};
// The cancel flag of the work in progress, set from the handler.
std::atomic<std::atomic<std::uint8_t>*> cancelFlag{nullptr};

void NoteInterrupt(int) {
    interrupts.fetch_add(1);
    if (std::atomic<std::uint8_t>* flag = cancelFlag.load()) {
        flag->store(1);
    }
}

// Waits until standard input has something to read; false when Ctrl-C was pressed after
// `seen` presses, whichever thread the signal reached.
bool WaitForInput(unsigned seen) {
    for (;;) {
        if (interrupts.load() != seen) {
            return false;
        }
        pollfd input{STDIN_FILENO, POLLIN, 0};
        const int ready = ::poll(&input, 1, 100);
        if (ready > 0) {
            return true;
        }
        if (ready < 0 && errno != EINTR) {
            return true;  // let the read report the failure
        }
    }
}

// Switches terminal echo off for its lifetime. Input typed ahead is kept, not flushed.
class EchoOff {
public:
    EchoOff() {
        if (::tcgetattr(STDIN_FILENO, &saved_) == 0) {
            termios quiet = saved_;
            quiet.c_lflag &= static_cast<tcflag_t>(~ECHO);
            active_ = ::tcsetattr(STDIN_FILENO, TCSANOW, &quiet) == 0;
        }
    }
    ~EchoOff() {
        if (active_) {
            ::tcsetattr(STDIN_FILENO, TCSANOW, &saved_);
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
    // Presses not yet taken count too: Ctrl-C between a prompt and this read ends it as well.
    const unsigned seen = interruptsTaken.load();
    for (;;) {
        if (!WaitForInput(seen)) {
            return false;  // Ctrl-C: the caller takes the interrupt
        }
        char c = 0;
        const ssize_t n = ::read(STDIN_FILENO, &c, 1);
        if (n < 0 && errno == EINTR) {
            continue;  // WaitForInput tells whether it was Ctrl-C
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

void CatchInterrupts(std::atomic<std::uint8_t>* cancel) {
    cancelFlag.store(cancel);
    struct sigaction action {};
    action.sa_handler = NoteInterrupt;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;  // no SA_RESTART: a prompt's read returns at once
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        ::sigaction(signal, &action, nullptr);
    }
}

bool TakeInterrupt() {
    const unsigned now = interrupts.load();
    return interruptsTaken.exchange(now) != now;
}

int TerminalColumns() {
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    return 80;
}

}  // namespace platform
