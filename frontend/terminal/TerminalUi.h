#pragma once
// What dcf and the stub's terminal front end show and ask on a terminal: one progress line
// redrawn in place, questions with lettered answers, lines with path completion, and secrets
// typed without echo. Questions go to the controlling terminal, even when the standard streams
// are redirected.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Common/Common/SecureBuffer.h"
#include "platform/Terminal.h"

namespace terminal {

// The progress of a long run: a bar, percent, bytes, rate and time left, and a status text such
// as the file last finished, redrawn in place. Fields that do not fit the width are left out
// whole; the status is shortened from its front, where a path has its least telling part.
class ProgressLine {
public:
    // `enabled`: draw at all. Nothing is drawn for runs that end within `quietStart`.
    ProgressLine(bool enabled, std::chrono::milliseconds quietStart);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // `percent` of `total` bytes are done (`total` 0: the amount is not known).
    void Update(std::uint32_t percent, std::uint64_t total, std::u16string_view status = {});
    // Clears the line.
    void Finish();
    // After Ctrl-C: clears the line with the "^C" that the terminal echoed on it, or, when none
    // was drawn, ends the line that the echo stands on.
    void Interrupted();

private:
    using Clock = std::chrono::steady_clock;

    bool enabled_;
    std::chrono::milliseconds quietStart_;
    bool drawn_ = false;
    Clock::time_point start_;
    // The rate is taken from the first update on, so that the work before it (the key block of a
    // new archive, the search for a stub's image) does not count as slow data.
    bool measuring_ = false;
    Clock::time_point rateStart_;
    double rateBase_ = 0;
};

// The fields of a progress line joined by two blanks, with as many of `fields` as fit in
// `width` columns (the first ones first, none cut) and `status` in the room that is left.
std::string FitProgressLine(const std::vector<std::string>& fields, std::string_view status,
                            std::size_t width);

// "1.5 MiB", "300 B": a byte count for people.
std::string ByteCount(double bytes);

// Asks "<question>[y]es, [n]o, [a]ll: " until a line begins with the first letter of a choice,
// in either case. The index of the choice; nothing when the input ended or Ctrl-C was pressed.
std::optional<std::size_t> AskChoice(std::string_view question,
                                     std::span<const std::string_view> choices);

// Asks for one line; nothing when the input ended or Ctrl-C was pressed.
std::optional<std::string> AskLine(std::string_view prompt,
                                   platform::LineEditing editing = platform::LineEditing::Plain);

// Asks for a secret without echo, as UTF-8 read into UTF-16. Nothing without a terminal, at the
// end of input or on Ctrl-C.
std::optional<Zelmarik::SecureU16String> AskSecret(std::string_view prompt);

}  // namespace terminal
