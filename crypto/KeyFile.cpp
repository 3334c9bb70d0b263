#include "crypto/KeyFile.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string>

#include "Common/Common/SecureBuffer.h"
#include "crypto/Rsa.h"
#include "crypto/SecurityKey.h"
#include "platform/File.h"
#include "platform/Text.h"

namespace Zelmarik {

namespace {

// The line in front of the next LF, cut of its trailing CR and LF characters; false when there
// is no LF. `rest` receives what follows the LF.
bool NextLine(const char* text, std::string_view& line, const char*& rest) {
    const char* end = std::strchr(text, '\n');
    if (end == nullptr) {
        return false;
    }
    rest = end + 1;
    while (end > text && (end[-1] == '\r' || end[-1] == '\n')) {
        --end;
    }
    line = std::string_view(text, static_cast<std::size_t>(end - text));
    return true;
}

bool IsBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Where the digits of a number begin: behind leading blanks and one optional sign.
std::size_t SkipBlanksAndSign(std::string_view in, bool& negative) {
    std::size_t i = 0;
    while (i < in.size() && IsBlank(in[i])) {
        ++i;
    }
    negative = i < in.size() && in[i] == '-';
    if (i < in.size() && (in[i] == '+' || in[i] == '-')) {
        ++i;
    }
    return i;
}

// An unsigned field in the manner of formatted input: blanks, a sign, at least one digit. The
// value is cut to 16 bits as a conversion to a short would do; far too large values saturate
// first, as they would in a 32-bit conversion.
bool ScanUnsigned16(std::string_view& in, std::uint16_t& value) {
    bool negative = false;
    std::size_t i = SkipBlanksAndSign(in, negative);
    if (i == in.size() || !IsDigit(in[i])) {
        return false;
    }
    std::uint64_t number = 0;
    for (; i < in.size() && IsDigit(in[i]); ++i) {
        number = std::min<std::uint64_t>(number * 10 + static_cast<unsigned>(in[i] - '0'),
                                         std::numeric_limits<std::uint32_t>::max());
    }
    const auto wide = static_cast<std::uint32_t>(number);
    value = static_cast<std::uint16_t>(negative ? 0u - wide : wide);
    in.remove_prefix(i);
    return true;
}

// A literal of the format: a blank in the format matches any run of blanks, anything else
// itself.
bool ScanLiteral(std::string_view& in, char literal) {
    if (literal == ' ') {
        while (!in.empty() && IsBlank(in.front())) {
            in.remove_prefix(1);
        }
        return true;
    }
    if (in.empty() || in.front() != literal) {
        return false;
    }
    in.remove_prefix(1);
    return true;
}

// A signed decimal number in the manner of a string-to-integer conversion: leading blanks, a
// sign, the digits up to the first other character; no digits give 0, and values beyond 32 bits
// saturate.
std::int32_t ParseInteger(std::string_view in) {
    bool negative = false;
    std::size_t i = SkipBlanksAndSign(in, negative);
    constexpr std::int64_t kLimit = std::int64_t{std::numeric_limits<std::int32_t>::max()} + 1;
    std::int64_t value = 0;
    for (; i < in.size() && IsDigit(in[i]); ++i) {
        value = std::min<std::int64_t>(value * 10 + (in[i] - '0'), kLimit);
    }
    value = negative ? -value : std::min<std::int64_t>(value, kLimit - 1);
    return static_cast<std::int32_t>(value);
}

}  // namespace

bool ParseKeyNumberLine(const char*& text, std::uint32_t* number) {
    std::string_view line;
    const char* rest = nullptr;
    if (!NextLine(text, line, rest) || line.size() != kKeyNumberDigits) {
        return false;
    }
    if (DCRSA::NumberFromHex(number, kRsaPrimeWords, line, kKeyNumberDigits) != kRsaPrimeWords) {
        return false;
    }
    text = rest;
    return true;
}

bool ParseKeyDate(std::string_view line, SystemTime& time) {
    std::uint16_t day = 0, month = 0, year = 0, hour = 0, minute = 0;
    const bool matched = ScanUnsigned16(line, day) && ScanLiteral(line, '.') &&
                         ScanUnsigned16(line, month) && ScanLiteral(line, '.') &&
                         ScanUnsigned16(line, year) && ScanLiteral(line, ',') &&
                         ScanLiteral(line, ' ') && ScanUnsigned16(line, hour) &&
                         ScanLiteral(line, ':') && ScanUnsigned16(line, minute);
    if (!matched) {
        return false;
    }
    time = SystemTime{};
    time.Year = year;
    time.Month = month;
    time.Day = day;
    time.Hour = hour;
    time.Minute = minute;
    return true;
}

bool DCCSecurityKey::ParsePrivateKeyText(const char* text) {
    if (text == nullptr) {
        return false;
    }
    if (!PrivateKey) {
        PrivateKey = std::make_unique<DCCPrivateKey>();
    }
    std::string_view line;
    if (!NextLine(text, line, text)) {
        return false;
    }
    Name = platform::Utf8ToUtf16(line);
    for (DCCPrivateKey::Number& number : PrivateKey->Numbers) {
        if (!ParseKeyNumberLine(text, number.data())) {
            return false;
        }
    }
    if (!NextLine(text, line, text)) {  // a line of the key tool's own, skipped
        return false;
    }
    // The creation time and the validity come as a pair, and only when the time's line end is
    // there.
    if (NextLine(text, line, text)) {
        if (!ParseKeyDate(line, Created)) {
            return false;
        }
        if (!NextLine(text, line, text)) {
            return false;
        }
        ValidityYears = ParseInteger(line);
        Expires = Created;
        if (ValidityYears != -1) {
            Expires.Year = static_cast<std::uint16_t>(Expires.Year + ValidityYears);
        }
    }
    Flags |= KeyHasPrivate;
    return true;
}

std::uint32_t DCCSecurityKey::PrivateFromFile(const char16_t* path) {
    if (path == nullptr) {
        return platform::kErrorInvalidParameter;
    }
    platform::File file;
    if (const platform::ErrorCode error = file.Open(path, platform::OpenMode::Read)) {
        return error;
    }
    std::uint64_t size = 0;
    if (const platform::ErrorCode error = file.Size(size)) {
        return error;
    }
    if (size > kLongestKeyFile) {
        return platform::kErrorInvalidData;  // not read: no key file is that long
    }
    SecureVector<char> text;  // the primes in clear: wiped whichever way this ends
    try {
        text.resize(static_cast<std::size_t>(size) + 1);  // zero-terminated
        if (!PrivateKey) {
            PrivateKey = std::make_unique<DCCPrivateKey>();
        }
    } catch (const std::bad_alloc&) {
        return platform::kErrorNotEnoughMemory;
    }
    std::size_t got = 0;
    if (const platform::ErrorCode error =
            file.Read(text.data(), static_cast<std::size_t>(size), got)) {
        return error;
    }
    file.Close();
    if (got != size || !ParsePrivateKeyText(text.data())) {
        return platform::kErrorInvalidData;
    }
    Flags |= KeyFromFile;
    return 0;
}

}  // namespace Zelmarik
