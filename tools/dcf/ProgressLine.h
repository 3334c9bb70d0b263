#pragma once
// The progress of a long run on the terminal: percent, bytes, rate and time left, redrawn in
// place on standard error. Silent when disabled, and for runs that end within a second.

#include <chrono>
#include <cstdint>

namespace dcf {

class ProgressLine {
public:
    explicit ProgressLine(bool enabled);
    ~ProgressLine();

    // `percent` of `total` bytes are done.
    void Update(std::uint32_t percent, std::uint64_t total);
    // Clears the line.
    void Finish();

private:
    using Clock = std::chrono::steady_clock;

    bool enabled_;
    bool drawn_ = false;
    Clock::time_point start_;
    // The rate is taken from the first update on, so that the work before it (the key block of a
    // new archive, the search for a stub's image) does not count as slow data.
    bool measuring_ = false;
    Clock::time_point rateStart_;
    double rateBase_ = 0;
};

}  // namespace dcf
