#include "tools/dcf/CategoryManifest.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <map>

#include "platform/Text.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ToolOutput.h"

namespace dcf {

namespace {

using nlohmann::json;
using Zelmarik::CDlpCategory;

CDlpCategory ParseCategory(const json& object) {
    if (!object.is_object()) {
        throw std::invalid_argument("a category must be an object");
    }
    CDlpCategory category;
    const auto id = object.find("id");
    if (id == object.end() || !id->is_string() ||
        !Zelmarik::CGuid::FromString(id->get<std::string>(), category.Id)) {
        throw std::invalid_argument(
            "a category needs an \"id\" such as "
            "\"01234567-89ab-cdef-0123-456789abcdef\"");
    }
    for (const auto& [key, value] : object.items()) {
        if (key == "id") {
            continue;
        }
        if (key == "name") {
            category.Name = platform::Utf8ToUtf16(value.get<std::string>());
        } else if (key == "kind") {
            category.Kind = value.get<std::int32_t>();
        } else if (key == "priority") {
            category.Priority = value.get<std::int32_t>();
        } else if (key == "hasPriority") {
            category.Flags.HasPriority = value.get<bool>();
        } else if (key == "unified") {
            category.Flags.Unified = value.get<bool>();
        } else if (key == "allData") {
            category.Flags.AllData = value.get<bool>();
        } else {
            throw std::invalid_argument("unknown field \"" + key + "\" of a category");
        }
    }
    return category;
}

}  // namespace

void ApplyCategoryManifest(const std::string& command, const std::string& path,
                           SourceListing& listing) {
    std::ifstream in(std::filesystem::path(PathFromArgument(path)), std::ios::binary);
    if (!in) {
        FailWith(command, path + ": the category manifest can't be read", kExitIo);
    }
    // Far more than the categories of any real tree need; a larger file is not read.
    constexpr std::size_t kLongestManifest = 64u << 20;
    const std::streamoff size = in.seekg(0, std::ios::end).tellg();
    if (size < 0 || static_cast<std::uint64_t>(size) > kLongestManifest) {
        FailWith(command, path + ": longer than the 64 MiB a category manifest may have",
                 kExitUsage);
    }
    std::string text(static_cast<std::size_t>(size), '\0');
    in.seekg(0).read(text.data(), size);
    text.resize(static_cast<std::size_t>(in.gcount()));
    std::map<std::string, ArchiveWriteItem*> files;
    for (ArchiveWriteItem& item : listing.items) {
        if (!item.isFolder) {
            files[NameUnderRoot(listing, item.path)] = &item;
        }
    }
    std::string name;
    try {
        const json manifest = json::parse(text);
        if (!manifest.is_object()) {
            throw std::invalid_argument("the manifest must be an object of names");
        }
        for (const auto& [key, categories] : manifest.items()) {
            name = key;
            const auto file = files.find(key);
            if (file == files.end()) {
                throw std::invalid_argument("no such file among the paths given");
            }
            if (!categories.is_array()) {
                throw std::invalid_argument("the categories must be an array");
            }
            ArchiveWriteItem& item = *file->second;
            item.hasCategories = true;
            for (const json& object : categories) {
                item.categories.Add(ParseCategory(object));
            }
        }
    } catch (const std::exception& error) {
        FailWith(command, path + ": " + (name.empty() ? "" : "\"" + name + "\": ") + error.what(),
                 kExitUsage);
    }
}

}  // namespace dcf
