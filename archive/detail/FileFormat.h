#pragma once
// The archive format classes: every program that reads or writes an archive goes through one of
// them. There is no registry of formats: a program holding several asks each one IsFormatOf.

#include <string>
#include <vector>

#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/ResultCodes.h"

struct ArchiveExtractRequest;
struct ArchiveWriteRequest;

// For callers that want to hear of each finished file; ExtractArchive calls it after onFileDone.
class DCIFileFormatCallback {
public:
    virtual ~DCIFileFormatCallback() = default;
    virtual void OnFileExtracted(const std::u16string& path);
};

class DCCFileFormat {
public:
    DCCFileFormat(std::u16string formatName, std::u16string extension,
                  DCIFileFormatCallback* callback);
    DCCFileFormat(const DCCFileFormat&) = delete;
    DCCFileFormat& operator=(const DCCFileFormat&) = delete;

    // Virtual operations, in the order of their slots.
    virtual bool IsFormatOf(std::u16string path);
    // A new object of the same format, owned by the caller.
    virtual DCCFileFormat* CreateInstance(const std::u16string* stubPath);
    virtual int GetFormatId();
    virtual ~DCCFileFormat();
    virtual FormatResult WriteArchive(ArchiveWriteRequest* request,
                                      DCCArchiveUserSettings* settings);
    virtual FormatResult ExtractArchive(ArchiveExtractRequest* request,
                                        DCCArchiveUserSettings* settings);
    // Slots kept with their default results; nothing calls them.
    virtual int FormatHookA(std::uint32_t first, std::uint32_t second);
    virtual int FormatHookB(std::u16string first, std::u16string second);
    virtual int FormatHookC(std::u16string first, std::u16string second);
    virtual DCIFileFormatCallback* SetCallback(DCIFileFormatCallback* callback);
    virtual DCIFileFormatCallback* GetCallback();

    // True if `path` ends in `extension`, letters compared without case.
    bool HasOwnExtension(const std::u16string& path) const;

    const std::u16string& FormatName() const { return formatName; }
    const std::u16string& Extension() const { return extension; }
    // Each file the last ExtractArchive finished, in the order of extraction.
    const std::vector<std::u16string>& ExtractedFiles() const { return extractedFiles; }

protected:
    std::u16string formatName;
    std::u16string extension;
    std::vector<std::u16string> extractedFiles;
    DCIFileFormatCallback* callback;
};

// The letters of `text` in one case, for comparisons that ignore case.
std::u16string FoldCase(std::u16string_view text);
