#pragma once
// Files by UTF-16 path. Paths are in the native form of the platform (see kPathSeparator);
// every failure is a Windows error number (ErrorCodes.h).

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/ErrorCodes.h"

namespace platform {

#ifdef _WIN32
inline constexpr char16_t kPathSeparator = u'\\';
#else
inline constexpr char16_t kPathSeparator = u'/';
#endif

class TargetTree;
struct FileIdentity;

enum class OpenMode {
    Read,          // existing file, reading only, others may read and write
    ReadWrite,     // existing file, reading and writing
    CreateAlways,  // create or truncate, writing
    CreateNew,     // create, failing with kErrorFileExists when the file is there
    Append,        // create if missing, every write goes to the end
};

// An open file. Move-only; closes itself.
class File {
public:
    File() = default;
    ~File();
    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    ErrorCode Open(const std::u16string& path, OpenMode mode);
    void Close();
    bool IsOpen() const;

    // Reads up to `size` bytes; `got` < `size` only at the end of the file.
    ErrorCode Read(void* buffer, std::size_t size, std::size_t& got);
    // Writes all `size` bytes or fails.
    ErrorCode Write(const void* buffer, std::size_t size);
    // Moves to an absolute offset; an offset past the end is allowed, as on Windows.
    ErrorCode Seek(std::uint64_t offset);
    ErrorCode Tell(std::uint64_t& offset) const;
    ErrorCode Size(std::uint64_t& size) const;
    ErrorCode Flush();

private:
    friend class TargetTree;
    friend ErrorCode IdentityOf(const File& file, FileIdentity& identity);

    std::intptr_t handle_ = -1;
};

// (The names differ from the Win32 ones, which windows.h turns into macros.)

// Size of a file; false when it can't be opened or sized.
bool QueryFileSize(const std::u16string& path, std::uint64_t& size);
// The same as a number: 0 when the file is missing or can't be sized, so both look alike.
std::uint64_t GetFileSizeOf(const std::u16string& path);
bool PathExists(const std::u16string& path);
bool IsDirectory(const std::u16string& path);
ErrorCode RemoveFile(const std::u16string& path);
// Moves within one volume; fails with kErrorAlreadyExists when `to` exists.
ErrorCode MoveFileNoReplace(const std::u16string& from, const std::u16string& to);
// Moves within one volume, putting `from` in the place of what is at `to` in one step.
ErrorCode MoveFileReplacing(const std::u16string& from, const std::u16string& to);
// Copies `from` over `to`, replacing it.
ErrorCode CopyFileReplacing(const std::u16string& from, const std::u16string& to);
// Creates one folder; kErrorAlreadyExists when something of that name is there.
ErrorCode MakeDirectory(const std::u16string& path);
// Removes a folder that is empty; one that holds anything stays (kErrorDirNotEmpty).
ErrorCode RemoveEmptyDirectory(const std::u16string& path);
// Creates a folder and the missing levels above it, and gives those it created, deepest first,
// so that a caller can take them back. The first failure ends it.
ErrorCode MakeDirectoryLevels(const std::u16string& path, std::vector<std::u16string>& created);
// Creates a new empty file with a unique name "<prefix>XXXX.tmp" in `folder` and gives its path.
ErrorCode CreateTempFile(const std::u16string& folder, const std::u16string& prefix,
                         std::u16string& path);

}  // namespace platform
