#pragma once
// The terminal of POSIX programs: questions asked on the controlling terminal even when the
// standard streams are redirected (as gpg and age ask), input without echo, a line editor that
// completes paths, Ctrl-C as a request instead of the end of the process, the width for a
// progress line.

#include <atomic>
#include <cstdint>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// True when standard input and standard output are both terminals.
bool IsInteractiveTerminal();
// True when there is a terminal to ask on: the controlling terminal of the process.
bool HasTerminal();
// True when standard error is a terminal, where progress is drawn.
bool StandardErrorIsTerminal();

// Text for the user at the terminal: the controlling terminal, else standard error.
void WriteTerminal(std::string_view text);

enum class LineEditing {
    Plain,  // the terminal's own editing
    Paths,  // Tab completes the path being typed, twice lists what would complete it
};

// Shows `prompt` and reads one line from the terminal, echoed, without its line end. False at
// the end of input, or when Ctrl-C is pressed while it waits (on any thread: a question of a
// worker thread ends too); the terminal then moves to a new line.
bool ReadTerminalLine(std::string_view prompt, std::string& line,
                      LineEditing editing = LineEditing::Plain);

// Shows `prompt` and reads one line without echo into `buffer`, then ends the line on the
// screen. The length read (a longer line gives buffer.size() + 1 and keeps only the first bytes),
// or nothing at the end of input, on Ctrl-C or without a terminal. The caller wipes `buffer`.
std::optional<std::size_t> ReadTerminalSecret(std::string_view prompt, std::span<char> buffer);

// Reads one line of standard input, terminal or not, into `buffer` a byte at a time, through no
// buffer of the C library, so that no copy of a secret stays behind. The length read, as
// ReadTerminalSecret gives it; nothing at the end of input with nothing read. The caller wipes
// `buffer`.
std::optional<std::size_t> ReadInputSecret(std::span<char> buffer);

// From now on Ctrl-C, and the requests to end that SIGTERM and SIGHUP bring, are noted instead
// of ending the process, so that work in progress can stop in order and clean up. Each one also
// sets `*cancel` unless it is null; the flag must outlive the next call.
void CatchInterrupts(std::atomic<std::uint8_t>* cancel = nullptr);
// True when Ctrl-C was pressed since the last call.
bool TakeInterrupt();

// Columns of the terminal, 80 when unknown.
int TerminalColumns();

// A path typed on a terminal as a shell reads it: a leading "~" or "~/" is the home folder.
std::string ExpandHomeFolder(std::string_view path);

// The names that complete the last component of a typed path, in name order, each with a final
// '/' when it is a folder. Names that begin with a dot only when the component does.
std::vector<std::string> PathCompletions(std::string_view typed);

}  // namespace platform
