#pragma once
// What the system knows about the volume a path lies on: its mount root, its file system and,
// for a path on a network mount, its UNC form.

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/ErrorCodes.h"
#include "platform/NamedAnswer.h"

namespace platform {

// File system flags, with their Windows values.
inline constexpr std::uint32_t kCaseSensitiveSearch = 0x00000001;
inline constexpr std::uint32_t kCasePreservedNames = 0x00000002;
inline constexpr std::uint32_t kUnicodeOnDisk = 0x00000004;
inline constexpr std::uint32_t kReadOnlyVolume = 0x00080000;

// Network error numbers of a UNC lookup.
inline constexpr ErrorCode kErrorBadDevice = 1200;
inline constexpr ErrorCode kErrorNotConnected = 2250;

struct VolumeFileSystem {
    ErrorCode Code = kErrorSuccess;
    std::u16string Name;
    std::uint32_t Flags = 0;
};

// The root of the volume `path` lies on, such as "C:\" or "/home/"; a substituted drive
// resolves to the drive under it.
NamedAnswer VolumeRootOf(std::u16string_view path);

// The file system of the volume whose root is `root`.
VolumeFileSystem VolumeFileSystemOf(std::u16string_view root);

// The UNC form of a path on a mapped or mounted network share; 2250 for a path that is not on
// one.
NamedAnswer UniversalNameOf(std::u16string_view path);

}  // namespace platform
