#pragma once
// Reads the stub's resources back from a built executable: dialog templates, the icon group,
// the manifest, and the imports and subsystem from its headers.

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

// An executable of this program's platform, mapped as an image that is not run.
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
    WORD Subsystem() const;
    // The libraries it imports from, in lower case.
    std::vector<std::string> ImportedDlls() const;

private:
    const IMAGE_NT_HEADERS& Headers() const;
    const BYTE* Base() const;

    HMODULE module_ = nullptr;
};

// Nothing when the bytes are not a complete extended dialog template.
std::optional<DialogTemplate> ParseDialogTemplate(const std::vector<std::uint8_t>& bytes);

}  // namespace tests
