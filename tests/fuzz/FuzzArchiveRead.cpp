// Hostile archives opened by the format classes, extracted with a fixed password into a fresh
// target folder deep inside a sandbox. After each run nothing may exist in the sandbox but the
// archive, the folders down to the target and what lies inside the target.
//
// The first byte chooses what the rest is:
//   low two bits 0   the rest is a whole DCF image
//                1   the rest is a whole self-extracting file
//                2,3 the rest edits the plain records of a valid image (see HostileImage.h)
//   bit 2   an edited image is wrapped as a self-extracting file
//   bits 3-4 the overwrite mode, 100 to 103 (103 with no callback decides 104)
//   bit 5   the target already holds the files of the valid image

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "archive/detail/ArchiveExtractRequest.h"
#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/FileFormatSFX.h"
#include "tests/TestFolder.h"
#include "tests/fuzz/HostileImage.h"

namespace {

namespace fs = std::filesystem;
using tests::Bytes;

constexpr char16_t kPassword[] = u"secret";
// The target lies this deep, so that a name that climbs out of it is seen in the sandbox.
constexpr int kTargetDepth = 6;

enum Mode : std::uint8_t { RawImage = 0, RawSelfExtracting = 1 };
constexpr std::uint8_t kModeMask = 0x03;
constexpr std::uint8_t kWrapBit = 0x04;
constexpr int kOverwriteShift = 3;
constexpr std::uint8_t kExistingBit = 0x20;

class Sandbox {
public:
    // In a memory file system where there is one: the runs then cost no disk.
    Sandbox()
        : root_(fs::is_directory("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path()) {
        fs::path folder = root_.Native();
        for (int level = 1; level <= kTargetDepth; ++level) {
            folder /= "d" + std::to_string(level);
            allowed_.push_back(folder);
        }
        target_ = folder / "out";
    }

    fs::path Archive(bool selfExtracting) const {
        return root_.Native() / (selfExtracting ? "archive.exe" : "archive.dcf");
    }
    const fs::path& Target() const { return target_; }

    void Reset() const {
        std::error_code ignored;
        fs::remove_all(target_, ignored);
        fs::create_directories(target_);
    }

    // Aborts when anything exists outside the target but the archive and the folders above it.
    void CheckNothingEscaped() const {
        std::error_code error;
        for (auto it = fs::recursive_directory_iterator(root_.Native(), error);
             !error && it != fs::recursive_directory_iterator(); it.increment(error)) {
            const fs::path& path = it->path();
            if (path == target_) {
                it.disable_recursion_pending();
                continue;
            }
            if (path == Archive(false) || path == Archive(true) ||
                std::find(allowed_.begin(), allowed_.end(), path) != allowed_.end()) {
                continue;
            }
            std::fprintf(stderr, "written outside the target: %s\n", path.c_str());
            std::abort();
        }
        if (error) {
            std::fprintf(stderr, "sandbox unreadable: %s\n", error.message().c_str());
            std::abort();
        }
    }

private:
    tests::TestFolder root_;
    std::vector<fs::path> allowed_;
    fs::path target_;
};

// Files under the names of the valid image, so that the overwrite decisions come into play.
void PlaceExistingFiles(const fs::path& target) {
    fs::create_directories(target / "docs");
    const Bytes old(10, 'x');
    tests::WriteBytes(target / "docs" / "a.txt", old);
    tests::WriteBytes(target / "b.bin", old);
}

FormatResult Extract(const Sandbox& sandbox, std::span<const std::uint8_t> file,
                     bool selfExtracting, OverwriteMode mode) {
    const fs::path archive = sandbox.Archive(selfExtracting);
    tests::WriteBytes(archive, file);
    ArchiveExtractRequest request;
    request.sourcePath = archive.u16string();
    request.targetPath = sandbox.Target().u16string();
    request.password = kPassword;
    DCCArchiveUserSettings settings;
    settings.overwriteMode = mode;
    DCCFileFormatSFX selfExtractingFormat(u"stub");
    DCCFileFormatDCF plainFormat;
    DCCFileFormat& format = selfExtracting ? static_cast<DCCFileFormat&>(selfExtractingFormat)
                                           : static_cast<DCCFileFormat&>(plainFormat);
    const FormatResult result = format.ExtractArchive(&request, &settings);
    fs::remove(archive);
    return result;
}

struct Harness {
    Sandbox sandbox;
    fuzz::HostileImage image{kPassword};

    // The edits only reach deep when the unedited image extracts.
    Harness() {
        sandbox.Reset();
        if (Extract(sandbox, image.Valid(), false, OVERWRITE_REPLACE) != FORMAT_OK ||
            !fs::exists(sandbox.Target() / "docs" / "a.txt")) {
            std::fprintf(stderr, "the valid image does not extract\n");
            std::abort();
        }
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Harness harness;
    if (size == 0) {
        return 0;
    }
    const std::uint8_t control = data[0];
    const std::span<const std::uint8_t> rest(data + 1, size - 1);
    const auto mode =
        static_cast<OverwriteMode>(OVERWRITE_REPLACE + ((control >> kOverwriteShift) & 3));

    harness.sandbox.Reset();
    if ((control & kExistingBit) != 0) {
        PlaceExistingFiles(harness.sandbox.Target());
    }
    switch (control & kModeMask) {
        case RawImage:
            Extract(harness.sandbox, rest, false, mode);
            break;
        case RawSelfExtracting:
            Extract(harness.sandbox, rest, true, mode);
            break;
        default: {
            const Bytes image = harness.image.Assemble(rest);
            if ((control & kWrapBit) != 0) {
                Extract(harness.sandbox, fuzz::SelfExtracting(image), true, mode);
            } else {
                Extract(harness.sandbox, image, false, mode);
            }
            break;
        }
    }
    harness.sandbox.CheckNothingEscaped();
    return 0;
}
