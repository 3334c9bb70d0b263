#pragma once
// Files to tag, categories to tag them with, and the stream read back.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "Common/DataCategory/CategoryContainer.h"
#include "Shared/Tagger/LongPath.h"
#include "Shared/Tagger/Tagger.h"
#include "platform/File.h"
#include "platform/TaggedFile.h"
#include "tests/TestFolder.h"

namespace tests {

// Opens the protected operations of the tagger to the tests.
class TaggerProbe : public Zelmarik::CTagger {
public:
    using CTagger::TagFileClose;
    using CTagger::TagFileOpen;
};

// A category whose identifier is 16 bytes counting up from `seed`.
inline Zelmarik::CDlpCategory Category(std::uint32_t seed) {
    Zelmarik::CDlpCategory category;
    for (std::size_t i = 0; i < Zelmarik::CGuid::kSize; ++i) {
        category.Id.Bytes[i] = static_cast<std::uint8_t>(seed + i * 7 + (seed >> 8));
    }
    category.Name = u"Category " + std::u16string(1, static_cast<char16_t>(u'A' + seed % 26));
    return category;
}

// The categories of `seeds`, in that order: not the order that Add would sort them into.
inline Zelmarik::CCategoryContainer Categories(const std::vector<std::uint32_t>& seeds) {
    Zelmarik::CCategoryContainer container;
    for (const std::uint32_t seed : seeds) {
        container.Categories.push_back(Category(seed));
    }
    return container;
}

// What the stream must hold for `container`.
inline std::vector<std::uint8_t> Records(const Zelmarik::CCategoryContainer& container) {
    std::vector<std::uint8_t> records;
    for (const Zelmarik::CDlpCategory& category : container.Categories) {
        records.insert(records.end(), category.Id.Bytes.begin(), category.Id.Bytes.end());
    }
    return records;
}

inline std::u16string StreamPath(const std::u16string& file) {
    return Zelmarik::ToLongPath(file.c_str()) + u":ZelTag5";
}

// The stream content of `file`; fails the test when there is no stream.
inline std::vector<std::uint8_t> StreamOf(const std::u16string& file) {
    std::vector<std::uint8_t> content;
    EXPECT_EQ(platform::ReadTagStream(StreamPath(file), content), platform::kErrorSuccess);
    return content;
}

inline bool HasStream(const std::u16string& file) {
    std::vector<std::uint8_t> content;
    return platform::ReadTagStream(StreamPath(file), content) == platform::kErrorSuccess;
}

inline platform::FileStamps StampsOf(const std::u16string& file) {
    platform::FileStamps stamps;
    EXPECT_EQ(platform::ReadPathStamps(file, stamps), platform::kErrorSuccess);
    return stamps;
}

inline void ExpectSameStamps(const platform::FileStamps& expected,
                             const platform::FileStamps& actual) {
    EXPECT_EQ(expected.Creation, actual.Creation);
    EXPECT_EQ(expected.LastAccess, actual.LastAccess);
    EXPECT_EQ(expected.LastWrite, actual.LastWrite);
}

inline std::filesystem::perms PermissionsOf(const std::u16string& file) {
    return std::filesystem::status(std::filesystem::path(file)).permissions();
}

inline bool IsWritable(const std::u16string& file) {
    return (PermissionsOf(file) & std::filesystem::perms::owner_write) !=
           std::filesystem::perms::none;
}

class TaggerTest : public ::testing::Test {
protected:
    // A new file with some content, its last write time moved into the past so that a
    // changed time shows.
    std::u16string MakeFile(const std::u16string& name) {
        const std::u16string path = folder_.Path(name);
        platform::File file;
        EXPECT_EQ(file.Open(path, platform::OpenMode::CreateAlways), platform::kErrorSuccess);
        EXPECT_EQ(file.Write("content", 7), platform::kErrorSuccess);
        file.Close();
        const std::filesystem::path native(path);
        std::filesystem::last_write_time(native, std::filesystem::last_write_time(native) -
                                                     std::chrono::hours(24 * 400) -
                                                     std::chrono::microseconds(123457));
        return path;
    }

    // Read-only files are made writable again, so that the folder can go.
    void MakeReadOnly(const std::u16string& path) {
        readOnly_.push_back(path);
        std::filesystem::permissions(std::filesystem::path(path),
                                     std::filesystem::perms::owner_write |
                                         std::filesystem::perms::group_write |
                                         std::filesystem::perms::others_write,
                                     std::filesystem::perm_options::remove);
    }

    void TearDown() override {
        for (const std::u16string& path : readOnly_) {
            std::error_code ignored;
            std::filesystem::permissions(std::filesystem::path(path),
                                         std::filesystem::perms::owner_write,
                                         std::filesystem::perm_options::add, ignored);
        }
    }

    TestFolder folder_;
    std::vector<std::u16string> readOnly_;
};

}  // namespace tests
