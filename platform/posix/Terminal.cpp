#include "platform/Terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>

#include "platform/posix/TerminalDevice.h"

namespace platform {
namespace posix {
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

TerminalDevice OpenTerminal() {
    const int fd = ::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (fd >= 0) {
        return {fd, fd, true};
    }
    return {STDIN_FILENO, STDERR_FILENO, false};
}

}  // namespace

const TerminalDevice& Terminal() {
    static const TerminalDevice device = OpenTerminal();
    return device;
}

void WriteAll(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t n = ::write(fd, text.data(), text.size());
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return;  // a terminal that went away takes nothing more
        }
        text.remove_prefix(static_cast<std::size_t>(n));
    }
}

unsigned InterruptsSeen() {
    // Presses not yet taken count too: Ctrl-C between a prompt and the read ends it as well.
    return interruptsTaken.load();
}

Input ReadInputByte(unsigned seen, char& byte) {
    const int fd = Terminal().input;
    for (;;) {
        if (interrupts.load() != seen) {
            return Input::Interrupted;
        }
        pollfd ready{fd, POLLIN, 0};
        const int polled = ::poll(&ready, 1, 100);
        if (polled < 0 && errno != EINTR) {
            return Input::End;
        }
        if (polled <= 0) {
            continue;  // another look at the interrupts
        }
        const ssize_t n = ::read(fd, &byte, 1);
        if (interrupts.load() != seen) {
            return Input::Interrupted;  // Ctrl-C came with the input: it wins
        }
        if (n == 1) {
            return Input::Byte;
        }
        if (n < 0 && errno == EINTR) {
            continue;
        }
        return Input::End;
    }
}

TerminalModes::TerminalModes(tcflag_t clear) {
    const int fd = Terminal().input;
    if (::tcgetattr(fd, &saved_) == 0) {
        termios changed = saved_;
        changed.c_lflag &= ~clear;
        changed.c_cc[VMIN] = 1;
        changed.c_cc[VTIME] = 0;
        active_ = ::tcsetattr(fd, TCSANOW, &changed) == 0;
    }
}

TerminalModes::~TerminalModes() {
    if (active_) {
        ::tcsetattr(Terminal().input, TCSANOW, &saved_);
    }
}

}  // namespace posix

bool IsInteractiveTerminal() {
    return ::isatty(STDIN_FILENO) && ::isatty(STDOUT_FILENO);
}

bool HasTerminal() {
    return posix::Terminal().controlling;
}

bool StandardErrorIsTerminal() {
    return ::isatty(STDERR_FILENO);
}

void WriteTerminal(std::string_view text) {
    posix::WriteAll(posix::Terminal().output, text);
}

bool ReadTerminalLine(std::string_view prompt, std::string& line, LineEditing editing) {
    line.clear();
    const unsigned seen = posix::InterruptsSeen();
    if (editing == LineEditing::Paths) {
        return posix::EditPathLine(prompt, line, seen);
    }
    WriteTerminal(prompt);
    for (;;) {
        char byte = 0;
        const posix::Input input = posix::ReadInputByte(seen, byte);
        if (input != posix::Input::Byte) {
            WriteTerminal("\n");  // past the "^C", or the line that the end of input left open
            return input == posix::Input::End && !line.empty();
        }
        if (byte == '\n') {
            if (!line.empty() && line.back() == '\r') {
                line.pop_back();
            }
            return true;
        }
        line.push_back(byte);
    }
}

std::optional<std::size_t> ReadTerminalSecret(std::string_view prompt, std::span<char> buffer) {
    if (!HasTerminal()) {
        return std::nullopt;
    }
    const unsigned seen = posix::InterruptsSeen();
    const posix::TerminalModes quiet(ECHO);
    WriteTerminal(prompt);
    std::size_t length = 0;  // bytes typed; those beyond the buffer are counted, not kept
    for (;;) {
        char byte = 0;
        const posix::Input input = posix::ReadInputByte(seen, byte);
        if (input == posix::Input::Byte && byte != '\n') {
            if (length < buffer.size()) {
                buffer[length] = byte;
            }
            ++length;
            byte = 0;
            continue;
        }
        WriteTerminal("\n");  // the Enter that was not echoed, or past the Ctrl-C
        if (input == posix::Input::Interrupted || (input == posix::Input::End && length == 0)) {
            return std::nullopt;
        }
        if (length > 0 && length <= buffer.size() && buffer[length - 1] == '\r') {
            buffer[--length] = 0;
        }
        return std::min(length, buffer.size() + 1);
    }
}

std::optional<std::size_t> ReadInputSecret(std::span<char> buffer) {
    std::size_t length = 0;  // bytes read; those beyond the buffer are counted, not kept
    bool any = false;
    for (;;) {
        char byte = 0;
        const ssize_t n = ::read(STDIN_FILENO, &byte, 1);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0 || byte == '\n') {
            if (n <= 0 && !any) {
                return std::nullopt;
            }
            if (length > 0 && length <= buffer.size() && buffer[length - 1] == '\r') {
                buffer[--length] = 0;
            }
            return std::min(length, buffer.size() + 1);
        }
        any = true;
        if (length < buffer.size()) {
            buffer[length] = byte;
        }
        ++length;
    }
}

void CatchInterrupts(std::atomic<std::uint8_t>* cancel) {
    posix::cancelFlag.store(cancel);
    struct sigaction action {};
    action.sa_handler = posix::NoteInterrupt;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;  // no SA_RESTART: a question's read returns at once
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        ::sigaction(signal, &action, nullptr);
    }
}

bool TakeInterrupt() {
    const unsigned now = posix::interrupts.load();
    return posix::interruptsTaken.exchange(now) != now;
}

int TerminalColumns() {
    winsize size{};
    for (const int fd : {STDERR_FILENO, posix::Terminal().output}) {
        if (::ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
            return size.ws_col;
        }
    }
    return 80;
}

}  // namespace platform
