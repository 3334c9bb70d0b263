#include "tools/dcf/ShippedStubs.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <vector>

#include "crypto/Hashes.h"
#include "platform/File.h"
#include "platform/Module.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ToolOutput.h"

namespace dcftool {

namespace {

namespace fs = std::filesystem;

// The stub folders in the order they are searched: the installed layout, then the build tree.
std::array<fs::path, 2> StubFolders() {
    const fs::path program = fs::path(platform::ModulePath()).parent_path();
    return {(program / ".." / "lib" / "dcf" / "stubs").lexically_normal(),
            (program / "stubs").lexically_normal()};
}

std::string Hex(std::span<const std::uint8_t> bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text.push_back(kDigits[byte >> 4]);
        text.push_back(kDigits[byte & 15]);
    }
    return text;
}

}  // namespace

const StubPlatform* FindStubPlatform(std::string_view name) {
    const auto found = std::find_if(kStubPlatforms.begin(), kStubPlatforms.end(),
                                    [&](const StubPlatform& p) { return p.name == name; });
    return found == kStubPlatforms.end() ? nullptr : &*found;
}

std::u16string LocateStub(const std::string& command, const StubPlatform& platform) {
    std::string searched;
    for (const fs::path& folder : StubFolders()) {
        const fs::path stub = folder / platform.file;
        std::error_code error;
        if (fs::is_regular_file(stub, error)) {
            return stub.u16string();
        }
        searched += (searched.empty() ? "" : " and ") + stub.string();
    }
    const std::string build_switch =
        platform.windows ? "-DDCF_WINDOWS_STUBS=ON (needs MinGW-w64)" : "-DDCF_STUBS=ON";
    FailWith(command,
             "no stub for " + std::string(platform.name) + " (" + std::string(platform.recipient) +
                 "): looked for " + searched +
                 ". Install the dcf package, which ships it; in a build tree, configure with " +
                 build_switch + " and build; or give --stub FILE",
             kExitIo);
}

ChosenStub ChooseStub(const std::string& command, const std::string& file,
                      const std::string& platform) {
    if (file.empty()) {
        const StubPlatform* shipped = FindStubPlatform(platform);
        return {LocateStub(command, *shipped), shipped->windows};
    }
    ChosenStub chosen{PathFromArgument(file), false};
    platform::File stub;
    const platform::ErrorCode error = stub.Open(chosen.path, platform::OpenMode::Read);
    if (error != platform::kErrorSuccess) {
        FailWith(command, file + ": no stub can be read there: " + DescribeError(error), kExitIo);
    }
    // Windows programs begin with the "MZ" of their DOS header.
    char magic[2] = {};
    std::size_t got = 0;
    chosen.windows = stub.Read(magic, sizeof(magic), got) == platform::kErrorSuccess &&
                     got == sizeof(magic) && magic[0] == 'M' && magic[1] == 'Z';
    return chosen;
}

std::string FileDigest(const std::string& command, const std::string& path, std::uint64_t length) {
    platform::File file;
    platform::ErrorCode error = file.Open(PathFromArgument(path), platform::OpenMode::Read);
    crypto::Sha256Context context;
    crypto::Sha256Init(context);
    std::vector<std::uint8_t> buffer(1 << 16);
    while (error == platform::kErrorSuccess && length > 0) {
        std::size_t got = 0;
        const std::size_t want =
            static_cast<std::size_t>(std::min<std::uint64_t>(length, buffer.size()));
        error = file.Read(buffer.data(), want, got);
        if (error == platform::kErrorSuccess && got < want) {
            error = platform::kErrorHandleEof;
        }
        crypto::Sha256Update(context, std::span(buffer.data(), got));
        length -= got;
    }
    std::array<std::uint8_t, crypto::kSha256DigestSize> digest{};
    crypto::Sha256Final(context, digest);
    if (error != platform::kErrorSuccess) {
        FailWith(command, path + ": the stub can't be read: " + DescribeError(error), kExitIo);
    }
    return Hex(digest);
}

std::string ShippedStubWithDigest(std::string_view digest) {
    for (const fs::path& folder : StubFolders()) {
        std::ifstream sums(folder / "SHA256SUMS");
        std::string line;
        while (std::getline(sums, line)) {
            // "<digest>  <platform>/<file>", as sha256sum writes it.
            const std::size_t slash = line.find('/');
            if (line.size() > digest.size() + 2 && line.compare(0, digest.size(), digest) == 0 &&
                line.compare(digest.size(), 2, "  ") == 0 && slash != std::string::npos) {
                return line.substr(digest.size() + 2, slash - digest.size() - 2);
            }
        }
    }
    return {};
}

}  // namespace dcftool
