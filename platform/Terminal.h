#pragma once
// The interactive terminal of POSIX programs: prompts, input without echo, Ctrl-C as a request
// instead of the end of the process, the width for a progress line.

#include <atomic>
#include <cstdint>
#include <string>

namespace platform {

// True when standard input and standard output are both terminals.
bool IsInteractiveTerminal();

// Reads one line from standard input without its line end; with `echo` false the typed
// characters are not shown. False at the end of input, or when Ctrl-C is pressed while it waits
// (on any thread: a prompt of a worker thread ends too).
bool ReadTerminalLine(std::string& line, bool echo);

// From now on Ctrl-C, and the requests to end that SIGTERM and SIGHUP bring, are noted instead
// of ending the process, so that work in progress can stop in order and clean up. Each one also
// sets `*cancel` unless it is null; the flag must outlive the next call.
void CatchInterrupts(std::atomic<std::uint8_t>* cancel = nullptr);
// True when Ctrl-C was pressed since the last call.
bool TakeInterrupt();

// Columns of the terminal, 80 when unknown.
int TerminalColumns();

}  // namespace platform
