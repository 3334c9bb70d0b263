#pragma once
// The archive library as programs see it; the one header they include. The format classes write
// archives and extract them as the stub does; ArchiveImage opens an archive of either form for a
// program that wants to inspect or extract it and hear what was read. The requests, settings,
// result codes and reports are those that these take.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Common/DataCategory/CategoryContainer.h"
#include "archive/detail/ArchiveExtractRequest.h"
#include "archive/detail/ArchiveReport.h"
#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/ArchiveWriteRequest.h"
#include "archive/detail/FileFormatSFX.h"
#include "archive/detail/ResultCodes.h"
#include "platform/ErrorCodes.h"
#include "platform/File.h"

// True when `path` is a self-extracting file, whatever its name: the SFX format class is asked.
bool IsSelfExtractingFile(const std::u16string& path);

// An archive file open for reading. Each operation starts at the first byte of its image, so
// they may follow one another in any order; the file stays open until the object goes.
class ArchiveImage {
public:
    // Opens `path` and finds its image. The form is asked of the format classes: a
    // self-extracting file is known by its trailer, anything else is taken for a plain image
    // from its first byte. FORMAT_SOURCE_OPEN_FAILED with the system's `error` when the file
    // can't be opened or sized; the results of ExtractArchive when a trailer points nowhere.
    FormatResult Open(const std::u16string& path, platform::ErrorCode& error);

    bool SelfExtracting() const { return selfExtracting_; }
    // Where the image starts in the file (the size of the stub in front of it) and its length.
    std::uint64_t Offset() const { return offset_; }
    std::uint64_t Size() const { return size_; }

    // Whether the image begins with the signature of the format.
    bool HasSignature();
    // The clear category preamble; no key is needed. FORMAT_FAILED without the signature or
    // when its bytes run past the file. `parsed` tells whether the category block was intact.
    FormatResult ReadPreamble(Zelmarik::CCategoryContainer& categories, bool& parsed);
    // Extracts the image as ExtractArchive does, appending each finished file to
    // `extractedFiles` and telling what was read in `report`.
    FormatResult Extract(ArchiveExtractRequest& request, DCCArchiveUserSettings& settings,
                         std::vector<std::u16string>& extractedFiles, ArchiveReport& report);
    // Walks the image like Extract, with the same results, but writes nothing: each data
    // stream is decrypted and decompressed to prove it. The request's selection plays no part.
    FormatResult Inspect(ArchiveExtractRequest& request, DCCArchiveUserSettings& settings,
                         ArchiveReport& report);

private:
    // The stream at the first byte of the image; false when it can't seek there.
    bool Rewind();

    platform::File stream_;
    bool selfExtracting_ = false;
    std::uint64_t offset_ = 0;
    std::uint64_t size_ = 0;
};

// What the format makes of a password: the low byte of each character, at most 64 bytes.
enum class PasswordFit {
    Fits,
    Empty,    // nothing, or nothing left once each character is cut to its low byte
    TooLong,  // more than 64 bytes: a writer refuses it
};
PasswordFit FitPassword(std::u16string_view password);

// What a writer accepts as a name on every system, so that an archive made here opens
// everywhere: a name the reader would take, with the rules of backslash systems wherever it runs
// (no ':', no device name such as CON, no component ending in a dot or a blank).
bool IsPortableArchiveName(std::u16string_view name);
