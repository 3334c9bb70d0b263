#include "tools/dcf/CategoryManifest.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <map>
#include <optional>

#include "platform/Text.h"
#include "tools/dcf/ToolOutput.h"

namespace dcftool {

namespace {

using nlohmann::json;
using Zelmarik::CDlpCategory;

// The fields that one mention of a category gives; the others it leaves to other mentions.
struct CategoryFields {
    std::optional<std::string> name;
    std::optional<std::int32_t> kind;
    std::optional<std::int32_t> priority;
    std::optional<bool> hasPriority;
    std::optional<bool> unified;
    std::optional<bool> allData;
    std::string firstFile;  // where the category was mentioned first
};

struct Mention {
    std::string id;  // as the manifest spells it, for messages
    Zelmarik::CGuid guid;
    CategoryFields fields;
};

Mention ParseMention(const json& object) {
    if (!object.is_object()) {
        throw std::invalid_argument("a category must be an object");
    }
    Mention mention;
    const auto id = object.find("id");
    if (id == object.end() || !id->is_string() ||
        !Zelmarik::CGuid::FromString(id->get<std::string>(), mention.guid)) {
        throw std::invalid_argument(
            "a category needs an \"id\" such as "
            "\"01234567-89ab-cdef-0123-456789abcdef\"");
    }
    mention.id = id->get<std::string>();
    CategoryFields& fields = mention.fields;
    for (const auto& [key, value] : object.items()) {
        if (key == "id") {
            continue;
        }
        if (key == "name") {
            fields.name = value.get<std::string>();
        } else if (key == "kind") {
            fields.kind = value.get<std::int32_t>();
        } else if (key == "priority") {
            fields.priority = value.get<std::int32_t>();
        } else if (key == "hasPriority") {
            fields.hasPriority = value.get<bool>();
        } else if (key == "unified") {
            fields.unified = value.get<bool>();
        } else if (key == "allData") {
            fields.allData = value.get<bool>();
        } else {
            throw std::invalid_argument("unknown field \"" + key + "\" of a category");
        }
    }
    return mention;
}

template <typename T>
std::string Shown(const T& value) {
    return json(value).dump();
}

// Takes a field that `given` has and `merged` lacks; refuses two different values.
template <typename T>
void MergeField(const char* field, const std::string& id, const std::string& file,
                std::optional<T>& merged, const std::optional<T>& given,
                const std::string& firstFile) {
    if (!given) {
        return;
    }
    if (merged && *merged != *given) {
        throw std::invalid_argument("category " + id + " has \"" + field + "\" " + Shown(*merged) +
                                    " for " + firstFile + " and " + Shown(*given) + " for " + file +
                                    "; give each category one set of fields");
    }
    merged = given;
}

void Merge(const Mention& mention, const std::string& file, CategoryFields& merged) {
    const CategoryFields& given = mention.fields;
    const std::string& first = merged.firstFile;
    MergeField("name", mention.id, file, merged.name, given.name, first);
    MergeField("kind", mention.id, file, merged.kind, given.kind, first);
    MergeField("priority", mention.id, file, merged.priority, given.priority, first);
    MergeField("hasPriority", mention.id, file, merged.hasPriority, given.hasPriority, first);
    MergeField("unified", mention.id, file, merged.unified, given.unified, first);
    MergeField("allData", mention.id, file, merged.allData, given.allData, first);
}

CDlpCategory BuildCategory(const Zelmarik::CGuid& id, const CategoryFields& fields) {
    CDlpCategory category;
    category.Id = id;
    category.Name = platform::Utf8ToUtf16(fields.name.value_or(""));
    category.Kind = fields.kind.value_or(category.Kind);
    category.Priority = fields.priority.value_or(category.Priority);
    category.Flags.HasPriority = fields.hasPriority.value_or(false);
    category.Flags.Unified = fields.unified.value_or(false);
    category.Flags.AllData = fields.allData.value_or(false);
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
            files[NameUnderRoot(item)] = &item;
        }
    }
    std::string name;
    try {
        const json manifest = json::parse(text);
        if (!manifest.is_object()) {
            throw std::invalid_argument("the manifest must be an object of names");
        }
        // Every mention of a category first, so that each file gets the fields of all of them.
        std::map<std::string, CategoryFields> merged;  // by the identifier's canonical text
        std::vector<std::pair<ArchiveWriteItem*, std::vector<Zelmarik::CGuid>>> tagged;
        for (const auto& [key, categories] : manifest.items()) {
            name = key;
            const auto file = files.find(key);
            if (file == files.end()) {
                throw std::invalid_argument("no such file among the paths given");
            }
            if (!categories.is_array()) {
                throw std::invalid_argument("the categories must be an array");
            }
            tagged.emplace_back(file->second, std::vector<Zelmarik::CGuid>{});
            for (const json& object : categories) {
                const Mention mention = ParseMention(object);
                CategoryFields& fields = merged[platform::Utf16ToUtf8(mention.guid.DebugLog())];
                if (fields.firstFile.empty()) {
                    fields.firstFile = key;
                }
                Merge(mention, key, fields);
                tagged.back().second.push_back(mention.guid);
            }
        }
        name.clear();
        for (auto& [item, ids] : tagged) {
            item->hasCategories = true;
            for (const Zelmarik::CGuid& id : ids) {
                item->categories.Add(
                    BuildCategory(id, merged.at(platform::Utf16ToUtf8(id.DebugLog()))));
            }
        }
    } catch (const std::exception& error) {
        FailWith(command, path + ": " + (name.empty() ? "" : "\"" + name + "\": ") + error.what(),
                 kExitUsage);
    }
}

}  // namespace dcftool
