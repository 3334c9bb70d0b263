#include "tests/frontend/win32/ResourceReader.h"

namespace tests {

namespace {

// Reads little-endian fields from a byte range; any read past the end marks it failed.
class FieldReader {
public:
    explicit FieldReader(const std::vector<std::uint8_t>& bytes) : bytes_(bytes) {}

    bool Failed() const { return failed_; }
    void AlignTo4() { at_ = (at_ + 3) & ~std::size_t{3}; }
    void Skip(std::size_t count) { Take(count); }

    std::uint16_t Word() {
        const std::uint8_t* p = Take(2);
        return p == nullptr ? 0 : static_cast<std::uint16_t>(p[0] | p[1] << 8);
    }
    std::uint32_t DoubleWord() {
        const std::uint32_t low = Word();
        return low | static_cast<std::uint32_t>(Word()) << 16;
    }
    short Short() { return static_cast<short>(Word()); }
    std::u16string String() {
        std::u16string text;
        while (!failed_) {
            const char16_t c = static_cast<char16_t>(Word());
            if (c == 0) {
                break;
            }
            text.push_back(c);
        }
        return text;
    }
    // A name or an ordinal; predefined control classes come back as their names.
    std::u16string NameOrOrdinal() {
        const std::uint16_t first = Word();
        if (first == 0) {
            return {};
        }
        if (first == 0xFFFF) {
            switch (Word()) {
                case 0x80:
                    return u"button";
                case 0x81:
                    return u"edit";
                case 0x82:
                    return u"static";
                default:
                    return u"#ordinal";
            }
        }
        at_ -= 2;
        return String();
    }

private:
    const std::uint8_t* Take(std::size_t count) {
        if (failed_ || count > bytes_.size() || at_ > bytes_.size() - count) {
            failed_ = true;
            return nullptr;
        }
        const std::uint8_t* p = bytes_.data() + at_;
        at_ += count;
        return p;
    }

    const std::vector<std::uint8_t>& bytes_;
    std::size_t at_ = 0;
    bool failed_ = false;
};

// ASCII letters only: the names compared are ASCII.
template <typename Text>
Text Lower(Text text) {
    for (auto& c : text) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<typename Text::value_type>(c - 'A' + 'a');
        }
    }
    return text;
}

}  // namespace

ResourceModule::ResourceModule(const std::u16string& path)
    : module_(LoadLibraryExW(reinterpret_cast<const wchar_t*>(path.c_str()), nullptr,
                             LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE)) {}

ResourceModule::~ResourceModule() {
    if (module_ != nullptr) {
        FreeLibrary(module_);
    }
}

std::vector<std::uint8_t> ResourceModule::Bytes(LPCWSTR type, WORD id) const {
    const HRSRC found = FindResourceW(module_, MAKEINTRESOURCEW(id), type);
    if (found == nullptr) {
        return {};
    }
    const HGLOBAL loaded = LoadResource(module_, found);
    const auto* data = static_cast<const std::uint8_t*>(LockResource(loaded));
    if (data == nullptr) {
        return {};
    }
    return std::vector<std::uint8_t>(data, data + SizeofResource(module_, found));
}

bool ResourceModule::HasLanguage(LPCWSTR type, WORD id, LANGID language) const {
    return FindResourceExW(module_, type, MAKEINTRESOURCEW(id), language) != nullptr;
}

// The handle of an image resource is its base with a flag in the lowest bits.
const BYTE* ResourceModule::Base() const {
    return reinterpret_cast<const BYTE*>(reinterpret_cast<ULONG_PTR>(module_) & ~ULONG_PTR{3});
}

const IMAGE_NT_HEADERS& ResourceModule::Headers() const {
    const auto& dos = *reinterpret_cast<const IMAGE_DOS_HEADER*>(Base());
    return *reinterpret_cast<const IMAGE_NT_HEADERS*>(Base() + dos.e_lfanew);
}

WORD ResourceModule::Subsystem() const {
    return Headers().OptionalHeader.Subsystem;
}

std::vector<std::string> ResourceModule::ImportedDlls() const {
    const IMAGE_DATA_DIRECTORY& imports =
        Headers().OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    std::vector<std::string> dlls;
    for (auto* entry =
             reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(Base() + imports.VirtualAddress);
         entry->Name != 0; ++entry) {
        dlls.push_back(Lower(std::string(reinterpret_cast<const char*>(Base() + entry->Name))));
    }
    return dlls;
}

std::optional<DialogTemplate> ParseDialogTemplate(const std::vector<std::uint8_t>& bytes) {
    FieldReader reader(bytes);
    if (reader.Word() != 1 || reader.Word() != 0xFFFF) {
        return std::nullopt;  // not the extended form
    }
    DialogTemplate dialog;
    reader.Skip(8);  // help id, extended style
    dialog.style = reader.DoubleWord();
    const std::uint16_t count = reader.Word();
    reader.Skip(4);  // x, y
    dialog.width = reader.Short();
    dialog.height = reader.Short();
    reader.NameOrOrdinal();  // menu
    reader.NameOrOrdinal();  // class
    dialog.caption = reader.String();
    if (dialog.style & (DS_SETFONT | DS_SHELLFONT)) {
        dialog.pointSize = reader.Word();
        reader.Skip(4);  // weight, italic, character set
        dialog.typeface = reader.String();
    }
    for (std::uint16_t i = 0; i < count && !reader.Failed(); ++i) {
        reader.AlignTo4();
        DialogItem item;
        reader.Skip(8);  // help id, extended style
        item.style = reader.DoubleWord();
        item.x = reader.Short();
        item.y = reader.Short();
        item.width = reader.Short();
        item.height = reader.Short();
        item.id = static_cast<int>(reader.DoubleWord());
        item.className = Lower(reader.NameOrOrdinal());
        item.text = reader.NameOrOrdinal();
        reader.Skip(reader.Word());  // creation data
        dialog.items.push_back(std::move(item));
    }
    if (reader.Failed()) {
        return std::nullopt;
    }
    return dialog;
}

}  // namespace tests
