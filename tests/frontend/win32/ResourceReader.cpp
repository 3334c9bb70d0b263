#include "tests/frontend/win32/ResourceReader.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tests {

namespace {

// Reads little-endian fields from a byte range; any read past the end marks it failed.
class FieldReader {
public:
    FieldReader(const std::vector<std::uint8_t>& bytes, std::size_t at) : bytes_(bytes), at_(at) {}

    bool Failed() const { return failed_; }
    std::size_t Position() const { return at_; }
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
    std::uint8_t Byte() {
        const std::uint8_t* p = Take(1);
        return p == nullptr ? 0 : *p;
    }
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
    std::size_t at_;
    bool failed_ = false;
};

std::u16string Lower(std::u16string text) {
    for (char16_t& c : text) {
        if (c >= u'A' && c <= u'Z') {
            c = static_cast<char16_t>(c - u'A' + u'a');
        }
    }
    return text;
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
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

std::optional<DialogTemplate> ParseDialogTemplate(const std::vector<std::uint8_t>& bytes) {
    FieldReader reader(bytes, 0);
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

std::optional<PortableExecutableFacts> ReadExecutableFacts(const std::u16string& path) {
    std::ifstream stream(std::filesystem::path(path), std::ios::binary);
    const std::vector<std::uint8_t> file((std::istreambuf_iterator<char>(stream)),
                                         std::istreambuf_iterator<char>());
    FieldReader dos(file, 0x3C);
    const std::size_t headers = dos.DoubleWord();
    FieldReader reader(file, headers);
    if (dos.Failed() || reader.DoubleWord() != 0x00004550) {  // "PE\0\0"
        return std::nullopt;
    }
    reader.Skip(2);  // machine
    const std::uint16_t sectionCount = reader.Word();
    reader.Skip(12);
    const std::uint16_t optionalSize = reader.Word();
    reader.Skip(2);
    const std::size_t optional = reader.Position();
    const std::uint16_t magic = reader.Word();
    const bool wide = magic == 0x20B;
    if (!wide && magic != 0x10B) {
        return std::nullopt;
    }
    PortableExecutableFacts facts;
    FieldReader subsystem(file, optional + 68);
    facts.subsystem = subsystem.Word();
    FieldReader directory(file, optional + (wide ? 112 : 96) + 8);  // the import directory
    const std::uint32_t importRva = directory.DoubleWord();

    struct Section {
        std::uint32_t rva, size, offset;
    };
    std::vector<Section> sections;
    FieldReader table(file, optional + optionalSize);
    for (std::uint16_t i = 0; i < sectionCount; ++i) {
        table.Skip(8);  // name
        Section section{};
        section.size = table.DoubleWord();
        section.rva = table.DoubleWord();
        table.Skip(4);
        section.offset = table.DoubleWord();
        table.Skip(16);
        sections.push_back(section);
    }
    auto offsetOf = [&](std::uint32_t rva) -> std::optional<std::size_t> {
        for (const Section& s : sections) {
            if (rva >= s.rva && rva - s.rva < s.size) {
                return std::size_t{s.offset} + (rva - s.rva);
            }
        }
        return std::nullopt;
    };
    const auto imports = offsetOf(importRva);
    if (subsystem.Failed() || directory.Failed() || table.Failed() || !imports) {
        return std::nullopt;
    }
    for (FieldReader descriptor(file, *imports);;) {
        descriptor.Skip(12);
        const std::uint32_t nameRva = descriptor.DoubleWord();
        descriptor.Skip(4);
        if (descriptor.Failed()) {
            return std::nullopt;
        }
        if (nameRva == 0) {
            break;
        }
        const auto name = offsetOf(nameRva);
        if (!name) {
            return std::nullopt;
        }
        std::string dll;
        for (std::size_t at = *name; at < file.size() && file[at] != 0; ++at) {
            dll.push_back(static_cast<char>(file[at]));
        }
        facts.importedDlls.push_back(Lower(dll));
    }
    return facts;
}

}  // namespace tests
