#pragma once
// What the reader's tests share: a category block, a recorder of every callback, and a fixture
// that writes an image as the archive and extracts it into a fresh folder.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "Common/DataCategory/CategoryContainer.h"
#include "archive/detail/ArchiveExtractRequest.h"
#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/FileFormatDCF.h"
#include "tests/TestFolder.h"
#include "tests/archive/ImageBuilder.h"

namespace tests {

namespace fs = std::filesystem;

// What the callbacks saw. Each callback is registered with the context of its own id and
// checks that it gets that one.
struct Recorder {
    struct Slot {
        Recorder* recorder;
        std::uint32_t id;
    };
    std::vector<std::string> events;
    std::vector<std::uint32_t> percents;
    std::atomic<std::uint8_t> cancel{0};
    int cancelAfterFiles = -1;     // set the flag after this many files are done
    int cancelAfterPercents = -1;  // set the flag after this many progress reports
    OverwriteMode answer = OVERWRITE_REPLACE;
    std::array<Slot, 13> slots{};

    static Recorder& From(void* context, std::uint32_t id) {
        auto* slot = static_cast<Slot*>(context);
        EXPECT_EQ(slot->id, id);
        return *slot->recorder;
    }
    static std::string Narrow(const std::u16string* path) {
        return fs::path(*path).filename().string();
    }
    static void OnProgress(std::uint32_t percent, void* context) {
        Recorder& r = From(context, CALLBACK_PROGRESS);
        r.percents.push_back(percent);
        if (static_cast<int>(r.percents.size()) == r.cancelAfterPercents) {
            r.cancel = 1;
        }
    }
    static void OnFileDone(const std::u16string* path, void* context) {
        Recorder& r = From(context, CALLBACK_FILE_DONE);
        r.events.push_back("done " + Narrow(path));
        if (--r.cancelAfterFiles == 0) {
            r.cancel = 1;
        }
    }
    static OverwriteMode OnFileExists(const std::u16string* path, bool* flag, void* context) {
        Recorder& r = From(context, CALLBACK_FILE_EXISTS);
        EXPECT_FALSE(*flag);
        r.events.push_back("exists " + Narrow(path));
        return r.answer;
    }
    static void OnFileWriting(const std::u16string* path, bool skipped, void* context) {
        Recorder& r = From(context, CALLBACK_FILE_WRITING);
        r.events.push_back((skipped ? "skip " : "write ") + Narrow(path));
    }

    void Attach(DCCArchiveUserSettings& settings) {
        for (std::uint32_t id = 0; id < slots.size(); ++id) {
            slots[id] = {this, id};
            settings.callbackContexts[id] = &slots[id];
        }
        settings.cancelFlag = &cancel;
        settings.onProgress = OnProgress;
        settings.onFileDone = OnFileDone;
        settings.onFileExists = OnFileExists;
        settings.onFileWriting = OnFileWriting;
    }
};

class DcfReaderTest : public ::testing::Test {
protected:
    void SetUp() override {
        request_.sourcePath = folder_.Path(u"archive.dcf");
        request_.targetPath = folder_.Path(u"out");
        request_.password = u"secret";
        fs::create_directory(Out());
        recorder_.Attach(settings_);
    }

    fs::path Out() const { return folder_.Native() / "out"; }
    // An empty target folder again.
    void ResetOut() const {
        fs::remove_all(Out());
        fs::create_directory(Out());
    }

    void WriteArchive(const Bytes& image) { WriteBytes(folder_.Native() / "archive.dcf", image); }

    FormatResult Extract(const Bytes& image) {
        WriteArchive(image);
        return format_.ExtractArchive(&request_, &settings_);
    }

    std::size_t FilesUnderOut() const {
        return static_cast<std::size_t>(std::distance(fs::recursive_directory_iterator(Out()),
                                                      fs::recursive_directory_iterator()));
    }

    tests::TestFolder folder_;
    ArchiveExtractRequest request_;
    DCCArchiveUserSettings settings_;
    Recorder recorder_;
    DCCFileFormatDCF format_;
};

}  // namespace tests
