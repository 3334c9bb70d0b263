#pragma once
// The terminal that questions go to, and input from it that a Ctrl-C on any thread ends.

#include <termios.h>

#include <string>
#include <string_view>

namespace platform::posix {

// The controlling terminal, or standard input and standard error when there is none.
struct TerminalDevice {
    int input;
    int output;
    bool controlling;
};
const TerminalDevice& Terminal();

void WriteAll(int fd, std::string_view text);

enum class Input { Byte, End, Interrupted };
// Ctrl-C presses so far; a read that began after `seen` of them ends at the next one.
unsigned InterruptsSeen();
// One byte from the terminal, waiting for it.
Input ReadInputByte(unsigned seen, char& byte);

// Changes the terminal's local modes for its lifetime: `clear` flags off, and with ICANON among
// them byte-by-byte input. Input typed ahead is kept.
class TerminalModes {
public:
    explicit TerminalModes(tcflag_t clear);
    ~TerminalModes();
    TerminalModes(const TerminalModes&) = delete;
    TerminalModes& operator=(const TerminalModes&) = delete;

private:
    termios saved_{};
    bool active_ = false;
};

// Reads a line with the editing of LineEditing::Paths; `seen` as for ReadInputByte.
bool EditPathLine(std::string_view prompt, std::string& line, unsigned seen);

}  // namespace platform::posix
