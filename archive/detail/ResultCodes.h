#pragma once
// Results of every archive operation, and the overwrite modes that settings and callbacks speak.

#include <cstdint>

using FormatResult = std::int32_t;

inline constexpr FormatResult FORMAT_OK = 0;
// Not an archive of this format, a source shorter than a header, a damaged header.
inline constexpr FormatResult FORMAT_FAILED = 1;
inline constexpr FormatResult FORMAT_NO_PUBLIC_KEY = 3;
inline constexpr FormatResult FORMAT_BAD_KEY = 4;
// A write failed: the name block, a file header or data of a new archive.
inline constexpr FormatResult FORMAT_WRITE_FAILED = 5;
// A write failed: the preamble, key block or folder header of a new archive, or a target file
// during extraction.
inline constexpr FormatResult FORMAT_OUTPUT_WRITE_FAILED = 6;
inline constexpr FormatResult FORMAT_STUB_COPY_FAILED = 7;
inline constexpr FormatResult FORMAT_TARGET_OPEN_FAILED = 8;
inline constexpr FormatResult FORMAT_SOURCE_OPEN_FAILED = 9;
inline constexpr FormatResult FORMAT_SOURCE_EMPTY = 10;
inline constexpr FormatResult FORMAT_NO_PAYLOAD_ROOM = 11;
inline constexpr FormatResult FORMAT_BAD_ARGUMENT = 13;
inline constexpr FormatResult FORMAT_CANCELLED = 14;
inline constexpr FormatResult FORMAT_REPLACE_FAILED = 17;
inline constexpr FormatResult FORMAT_RETRY_FOLDER = 19;

using OverwriteMode = std::int32_t;

inline constexpr OverwriteMode OVERWRITE_REPLACE = 100;
inline constexpr OverwriteMode OVERWRITE_SKIP = 101;
inline constexpr OverwriteMode OVERWRITE_NUMBERED = 102;
inline constexpr OverwriteMode OVERWRITE_ASK = 103;
inline constexpr OverwriteMode OVERWRITE_CANCEL = 104;

// A short English description of a result, for programs that report it.
const char* DescribeFormatResult(FormatResult result);
