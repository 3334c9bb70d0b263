#include "tools/dcf/ProgressLine.h"

#include <cstdio>
#include <string>

#include "platform/Terminal.h"

namespace dcf {

namespace {

constexpr std::chrono::seconds kQuietStart{1};

std::string Bytes(double bytes) {
    static const char* const kUnits[] = {"B", "KiB", "MiB", "GiB", "TiB"};
    int unit = 0;
    while (bytes >= 1024.0 && unit < 4) {
        bytes /= 1024.0;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, kUnits[unit]);
    return text;
}

std::string Duration(double seconds) {
    const auto whole = static_cast<long long>(seconds + 0.5);
    char text[32];
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60,
                  whole % 60);
    return text;
}

}  // namespace

ProgressLine::ProgressLine(bool enabled) : enabled_(enabled), start_(Clock::now()) {}

ProgressLine::~ProgressLine() {
    Finish();
}

void ProgressLine::Update(std::uint32_t percent, std::uint64_t total) {
    const Clock::time_point now = Clock::now();
    const double done = static_cast<double>(total) * percent / 100.0;
    if (!measuring_) {
        measuring_ = true;
        rateStart_ = now;
        rateBase_ = done;
    }
    if (!enabled_ || now - start_ < kQuietStart) {
        return;
    }
    const double seconds = std::chrono::duration<double>(now - rateStart_).count();
    const double rate = seconds > 0 ? (done - rateBase_) / seconds : 0;
    const std::string left = rate > 0 ? Duration((static_cast<double>(total) - done) / rate) : "?";
    const std::string line = std::to_string(percent) + "%  " + Bytes(done) + " of " +
                             Bytes(static_cast<double>(total)) + "  " + Bytes(rate) + "/s  " +
                             left + " left";
    const auto width = static_cast<std::size_t>(platform::TerminalColumns() - 1);
    std::fprintf(stderr, "\r%-*s", static_cast<int>(width), line.substr(0, width).c_str());
    std::fflush(stderr);
    drawn_ = true;
}

void ProgressLine::Finish() {
    if (drawn_) {
        const int width = platform::TerminalColumns() - 1;
        std::fprintf(stderr, "\r%*s\r", width, "");
        std::fflush(stderr);
        drawn_ = false;
    }
}

}  // namespace dcf
