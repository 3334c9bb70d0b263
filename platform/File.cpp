// The parts of File that do not depend on the system: ownership of the handle, folder levels.
#include "platform/File.h"

namespace platform {

File::~File() {
    Close();
}

File::File(File&& other) noexcept : handle_(other.handle_) {
    other.handle_ = -1;
}

File& File::operator=(File&& other) noexcept {
    if (this != &other) {
        Close();
        handle_ = other.handle_;
        other.handle_ = -1;
    }
    return *this;
}

std::uint64_t GetFileSizeOf(const std::u16string& path) {
    std::uint64_t size = 0;
    return QueryFileSize(path, size) ? size : 0;
}

ErrorCode MakeDirectoryLevels(const std::u16string& path, std::vector<std::u16string>& created) {
    created.clear();
    std::vector<std::u16string> missing;  // deepest first
    std::u16string level = path;
    while (!level.empty() && level.back() == kPathSeparator) {
        level.pop_back();
    }
    while (!level.empty() && !PathExists(level)) {
        missing.push_back(level);
        const std::size_t separator = level.find_last_of(kPathSeparator);
        level.resize(separator == std::u16string::npos ? 0 : separator);
    }
    for (auto it = missing.rbegin(); it != missing.rend(); ++it) {
        if (const ErrorCode error = MakeDirectory(*it); error != kErrorSuccess) {
            return error;
        }
        created.insert(created.begin(), *it);
    }
    return IsDirectory(path) ? kErrorSuccess : kErrorDirectory;
}

}  // namespace platform
