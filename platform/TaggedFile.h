#pragma once
// A file that receives a tag stream, and the stream itself: the operations the tagger needs on
// them, each giving a Windows error number (ErrorCodes.h).
//
// Paths may carry the long-path prefix "\\?\" (or "\\?\UNC\"). A stream is named by its file's
// path followed by ":" and the stream name. On Windows it is an NTFS alternate data stream,
// opened through the native API; elsewhere it is the extended attribute "user.<stream name>" of
// the file, and a file system without extended attributes behaves as a volume without streams:
// the stream open fails with kErrorFileNotFound. There a file without any write permission bit
// counts as read-only, and clearing the read-only state adds the owner's write bit, and a link
// at the path's last component is never followed: it is acted on itself or refused.
//
// Handles are kInvalidTagHandle after a failed open.

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/ErrorCodes.h"

namespace platform {

using TagHandle = std::intptr_t;
inline constexpr TagHandle kInvalidTagHandle = -1;

// What a failed attribute read, size or seek gives, as on Windows.
inline constexpr std::uint32_t kInvalidTagValue = 0xFFFFFFFF;

inline constexpr std::uint32_t kFileAttributeReadOnly = 0x1;
inline constexpr std::uint32_t kFileAttributeDirectory = 0x10;
inline constexpr std::uint32_t kFileAttributeNormal = 0x80;

// The three times of a file, each a 64-bit stamp: FILETIME on Windows, nanoseconds since 1970
// elsewhere, where there is no creation time (0, ignored on restore).
struct FileStamps {
    std::uint64_t Creation = 0;
    std::uint64_t LastAccess = 0;
    std::uint64_t LastWrite = 0;
};

// The target, opened for writing its attributes. A read-only file gives kErrorAccessDenied.
ErrorCode OpenTaggedFile(const std::u16string& path, TagHandle& handle);
void CloseTaggedFile(TagHandle file);
ErrorCode ReadFileStamps(TagHandle file, FileStamps& stamps);
// Writes the three stamps back (the change time takes the last write time) and, unless
// `attributes` is 0, the attributes, so that a read-only bit found earlier is set again.
ErrorCode RestoreFileStamps(TagHandle file, const FileStamps& stamps, std::uint32_t attributes);
// `attributes` is kInvalidTagValue on failure.
ErrorCode GetPathAttributes(const std::u16string& path, std::uint32_t& attributes);
ErrorCode SetPathAttributes(const std::u16string& path, std::uint32_t attributes);

// Creates the stream or truncates it to length 0.
ErrorCode OpenTagStream(const std::u16string& streamPath, TagHandle& handle);
// `size` is kInvalidTagValue on failure.
ErrorCode TagStreamSize(TagHandle stream, std::uint32_t& size);
// `position` is the new offset, kInvalidTagValue on failure.
ErrorCode SeekTagStreamEnd(TagHandle stream, std::uint32_t& position);
// Writes one record at the current position and moves past it.
ErrorCode WriteTagRecord(TagHandle stream, std::span<const std::uint8_t, 16> record);
void CloseTagStream(TagHandle stream);
ErrorCode DeleteTagStream(const std::u16string& streamPath);

// Read side, for checks: the whole content of a stream, and the stamps of a file by path.
ErrorCode ReadTagStream(const std::u16string& streamPath, std::vector<std::uint8_t>& content);
ErrorCode ReadPathStamps(const std::u16string& path, FileStamps& stamps);

}  // namespace platform
