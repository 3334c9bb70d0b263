#pragma once
// Reads the stub's resources back from a built executable: dialog templates, the icon group,
// the manifest, and the imports and subsystem from the file's own headers.

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tests {

struct DialogItem {
    DWORD style = 0;
    short x = 0, y = 0, width = 0, height = 0;
    int id = 0;
    std::u16string className;  // lower case; predefined ordinals as their names
    std::u16string text;
};

struct DialogTemplate {
    DWORD style = 0;
    short width = 0, height = 0;
    std::u16string caption;
    WORD pointSize = 0;
    std::u16string typeface;
    std::vector<DialogItem> items;
};

// An executable opened as data; its resources are not run.
class ResourceModule {
public:
    explicit ResourceModule(const std::u16string& path);
    ~ResourceModule();
    ResourceModule(const ResourceModule&) = delete;
    ResourceModule& operator=(const ResourceModule&) = delete;

    bool Loaded() const { return module_ != nullptr; }
    // The bytes of a resource in any language; empty when there is none.
    std::vector<std::uint8_t> Bytes(LPCWSTR type, WORD id) const;
    // True when the resource exists in exactly this language.
    bool HasLanguage(LPCWSTR type, WORD id, LANGID language) const;

private:
    HMODULE module_ = nullptr;
};

// Nothing when the bytes are not a complete extended dialog template.
std::optional<DialogTemplate> ParseDialogTemplate(const std::vector<std::uint8_t>& bytes);

struct PortableExecutableFacts {
    WORD subsystem = 0;
    std::vector<std::string> importedDlls;  // lower case
};

// Nothing when the file is not a well-formed PE image.
std::optional<PortableExecutableFacts> ReadExecutableFacts(const std::u16string& path);

}  // namespace tests
