#pragma once
// A fresh folder for one test, removed with everything in it at the end; whole files read and
// written in it.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "platform/File.h"

namespace tests {

class TestFolder {
public:
    TestFolder() : TestFolder(std::filesystem::temp_directory_path()) {}
    // A folder under `base`: a memory file system where a test is about races, not the disk.
    explicit TestFolder(const std::filesystem::path& base) {
        std::random_device seed;
        root_ = base / ("dcf-test-" + std::to_string(seed()) + "-" + std::to_string(seed()));
        std::filesystem::create_directories(root_);
    }
    ~TestFolder() {
        std::error_code ignored;
        std::filesystem::permissions(root_, std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add, ignored);
        std::filesystem::remove_all(root_, ignored);
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    // The folder in the platform's native form, without a final separator.
    std::u16string Root() const { return root_.u16string(); }
    std::u16string Path(const std::u16string& name) const {
        return Root() + platform::kPathSeparator + name;
    }
    const std::filesystem::path& Native() const { return root_; }

private:
    std::filesystem::path root_;
};

using Bytes = std::vector<std::uint8_t>;

// The whole file; nothing when it can't be opened.
inline std::optional<Bytes> ReadBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return std::nullopt;
    }
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

// Writes `bytes` as the whole file, making the folders above it.
inline void WriteBytes(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    if (path.has_parent_path()) {
        std::filesystem::create_directories(path.parent_path());
    }
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

}  // namespace tests
