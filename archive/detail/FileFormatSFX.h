#pragma once
// The self-extracting archive: a copy of the stub executable, the DCF image behind it, and the
// 1024-byte trailer that tells where the image starts.

#include "archive/detail/FileFormatDCF.h"

class DCCFileFormatSFX : public DCCFileFormatDCF {
public:
    // The stub is expected beside the running program under its default name.
    DCCFileFormatSFX();
    explicit DCCFileFormatSFX(std::u16string stubPath);
    // For a stub that is no Windows program, whose files need no ".exe": `extension` empty.
    DCCFileFormatSFX(std::u16string stubPath, std::u16string extension);

    bool IsFormatOf(std::u16string path) override;
    DCCFileFormat* CreateInstance(const std::u16string* stubPath) override;
    int GetFormatId() override;
    ~DCCFileFormatSFX() override;
    FormatResult WriteArchive(ArchiveWriteRequest* request,
                              DCCArchiveUserSettings* settings) override;
    FormatResult ExtractArchive(ArchiveExtractRequest* request,
                                DCCArchiveUserSettings* settings) override;

    const std::u16string& StubPath() const { return stubPath; }
    // The default stub: "Vomdrel" beside the running program, with the platform's executable
    // suffix.
    static std::u16string DefaultStubPath();

private:
    std::u16string stubPath;
};
