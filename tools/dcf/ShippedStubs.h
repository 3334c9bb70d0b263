#pragma once
// The stubs that dcf puts in front of a self-extracting archive, one per platform a recipient
// runs, and where they are: <prefix>/lib/dcf/stubs/ for a dcf installed as <prefix>/bin/dcf, and
// stubs/ beside dcf in a build tree. Each folder holds <platform>/Vomdrel[.exe] and SHA256SUMS,
// the digests of the stubs that were built with this dcf.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace dcftool {

struct StubPlatform {
    std::string_view name;       // the value of --stub-for
    std::string_view file;       // below a stub folder
    std::string_view recipient;  // who runs it, for messages
    bool windows;                // a Windows program: the archive gets ".exe"
};

inline constexpr std::array<StubPlatform, 3> kStubPlatforms = {{
    {"windows", "windows/Vomdrel.exe", "32- and 64-bit Windows, as an i686 program", true},
    {"windows-x64", "windows-x64/Vomdrel.exe", "64-bit Windows only", true},
    {"linux", "linux/Vomdrel", "Linux", false},
}};

// The platform named `name`, or nullptr.
const StubPlatform* FindStubPlatform(std::string_view name);

// The stub of `platform`. When none is found, ends `command` with a message that says which
// stub is missing, where it was looked for, and how to get it.
std::u16string LocateStub(const std::string& command, const StubPlatform& platform);

struct ChosenStub {
    std::u16string path;
    bool windows = false;  // a Windows program: the archive is named ".exe"
};

// The stub of a self-extracting archive: `file` when given (a Windows program when it begins
// like one), else the shipped stub of the platform named `platform`. Ends `command` when the
// stub is missing.
ChosenStub ChooseStub(const std::string& command, const std::string& file,
                      const std::string& platform);

// The SHA-256 of the first `length` bytes of a file, in lower-case hexadecimal; ends `command`
// when they can't be read.
std::string FileDigest(const std::string& command, const std::string& path, std::uint64_t length);

// The platform of the shipped stub with this digest, by the SHA256SUMS files of the stub
// folders; empty when it is none of them.
std::string ShippedStubWithDigest(std::string_view digest);

}  // namespace dcftool
