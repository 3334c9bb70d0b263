#include <algorithm>
#include <cstdio>

#include "frontend/terminal/TerminalUi.h"
#include "platform/Text.h"

namespace terminal {

namespace {

std::string Duration(double seconds) {
    const auto whole = static_cast<long long>(seconds + 0.5);
    char text[32];
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60,
                  whole % 60);
    return text;
}

std::string Bar(std::uint32_t percent) {
    constexpr std::uint32_t kWidth = 20;
    const std::uint32_t filled = std::min<std::uint32_t>(percent, 100) * kWidth / 100;
    return "[" + std::string(filled, '#') + std::string(kWidth - filled, '.') + "]";
}

// Columns that a UTF-8 text takes, one for each character.
std::size_t Columns(std::string_view text) {
    std::size_t columns = 0;
    for (const char byte : text) {
        columns += (static_cast<unsigned char>(byte) & 0xC0) != 0x80 ? 1 : 0;
    }
    return columns;
}

// The last `columns` characters of a UTF-8 text.
std::string_view LastColumns(std::string_view text, std::size_t columns) {
    std::size_t start = text.size();
    while (start > 0 && columns > 0) {
        --start;
        if ((static_cast<unsigned char>(text[start]) & 0xC0) != 0x80) {
            --columns;
        }
    }
    return text.substr(start);
}

}  // namespace

std::string ByteCount(double bytes) {
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

std::string FitProgressLine(const std::vector<std::string>& fields, std::string_view status,
                            std::size_t width) {
    constexpr std::string_view kGap = "  ";
    std::string line;
    for (const std::string& field : fields) {
        const std::size_t needed = (line.empty() ? 0 : kGap.size()) + Columns(field);
        if (Columns(line) + needed > width) {
            break;
        }
        line += (line.empty() ? "" : std::string(kGap)) + field;
    }
    const std::size_t used = Columns(line) + (line.empty() ? 0 : kGap.size());
    constexpr std::string_view kCut = "...";
    constexpr std::size_t kShortestStatus = 8;  // less would show nothing that tells
    if (status.empty() || used + kShortestStatus > width) {
        return line;
    }
    line += line.empty() ? "" : std::string(kGap);
    const std::size_t room = width - used;
    if (Columns(status) <= room) {
        return line + std::string(status);
    }
    return line + std::string(kCut) + std::string(LastColumns(status, room - kCut.size()));
}

ProgressLine::ProgressLine(bool enabled, std::chrono::milliseconds quietStart)
    : enabled_(enabled), quietStart_(quietStart), start_(Clock::now()) {}

ProgressLine::~ProgressLine() {
    Finish();
}

void ProgressLine::Update(std::uint32_t percent, std::uint64_t total, std::u16string_view status) {
    const Clock::time_point now = Clock::now();
    const double done = static_cast<double>(total) * percent / 100.0;
    if (!measuring_) {
        measuring_ = true;
        rateStart_ = now;
        rateBase_ = done;
    }
    if (!enabled_ || now - start_ < quietStart_ || (!drawn_ && percent >= 100 && total != 0)) {
        return;  // a run that is over at its first update shows nothing
    }
    std::vector<std::string> fields = {Bar(percent), std::to_string(percent) + "%"};
    if (total != 0) {
        const double seconds = std::chrono::duration<double>(now - rateStart_).count();
        const double rate = seconds > 0 ? (done - rateBase_) / seconds : 0;
        fields.push_back(ByteCount(done) + " of " + ByteCount(static_cast<double>(total)));
        fields.push_back(ByteCount(rate) + "/s");
        fields.push_back((rate > 0 ? Duration((static_cast<double>(total) - done) / rate) : "?") +
                         " left");
    }
    const auto width = static_cast<std::size_t>(platform::TerminalColumns() - 1);
    // "\x1b[K" clears what a longer line left behind.
    platform::WriteTerminal("\r" + FitProgressLine(fields, platform::Utf16ToUtf8(status), width) +
                            "\x1b[K");
    drawn_ = true;
}

void ProgressLine::Finish() {
    if (drawn_) {
        platform::WriteTerminal("\r\x1b[K");
        drawn_ = false;
    }
}

void ProgressLine::Interrupted() {
    if (drawn_) {
        Finish();
    } else if (enabled_) {
        platform::WriteTerminal("\n");
    }
}

}  // namespace terminal
