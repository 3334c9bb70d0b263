#include "archive/detail/FileFormat.h"

#include <utility>

void DCIFileFormatCallback::OnFileExtracted(const std::u16string&) {}

DCCFileFormat::DCCFileFormat(std::u16string formatName, std::u16string extension,
                             DCIFileFormatCallback* callback)
    : formatName(std::move(formatName)), extension(std::move(extension)), callback(callback) {}

DCCFileFormat::~DCCFileFormat() = default;

bool DCCFileFormat::IsFormatOf(std::u16string) {
    return false;
}
DCCFileFormat* DCCFileFormat::CreateInstance(const std::u16string*) {
    return nullptr;
}
int DCCFileFormat::GetFormatId() {
    return 0;
}
FormatResult DCCFileFormat::WriteArchive(ArchiveWriteRequest*, DCCArchiveUserSettings*) {
    return FORMAT_FAILED;
}
FormatResult DCCFileFormat::ExtractArchive(ArchiveExtractRequest*, DCCArchiveUserSettings*) {
    return FORMAT_FAILED;
}
int DCCFileFormat::FormatHookA(std::uint32_t, std::uint32_t) {
    return 2;
}
int DCCFileFormat::FormatHookB(std::u16string, std::u16string) {
    return 1;
}
int DCCFileFormat::FormatHookC(std::u16string, std::u16string) {
    return 1;
}

DCIFileFormatCallback* DCCFileFormat::SetCallback(DCIFileFormatCallback* newCallback) {
    callback = newCallback;
    return callback;
}

DCIFileFormatCallback* DCCFileFormat::GetCallback() {
    return callback;
}

bool DCCFileFormat::HasOwnExtension(const std::u16string& path) const {
    if (path.size() < extension.size()) {
        return false;
    }
    return FoldCase(std::u16string_view(path).substr(path.size() - extension.size())) ==
           FoldCase(extension);
}

std::u16string FoldCase(std::u16string_view text) {
    std::u16string folded(text);
    for (char16_t& c : folded) {
        // ASCII, Latin-1 and the basic Cyrillic capitals, which cover the names of extensions.
        if ((c >= u'A' && c <= u'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7) ||
            (c >= 0x410 && c <= 0x42F)) {
            c = static_cast<char16_t>(c + 0x20);
        } else if (c >= 0x400 && c <= 0x40F) {
            c = static_cast<char16_t>(c + 0x50);
        }
    }
    return folded;
}
