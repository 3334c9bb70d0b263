#pragma once
// The plain encrypted archive: a DCF image in a file of its own.

#include "archive/detail/FileFormat.h"

class DCCFileFormatDCF : public DCCFileFormat {
public:
    DCCFileFormatDCF();
    // For a format derived from this one.
    DCCFileFormatDCF(std::u16string formatName, std::u16string extension);

    bool IsFormatOf(std::u16string path) override;
    DCCFileFormat* CreateInstance(const std::u16string* stubPath) override;
    int GetFormatId() override;
    ~DCCFileFormatDCF() override;
    FormatResult WriteArchive(ArchiveWriteRequest* request,
                              DCCArchiveUserSettings* settings) override;
    FormatResult ExtractArchive(ArchiveExtractRequest* request,
                                DCCArchiveUserSettings* settings) override;
};
