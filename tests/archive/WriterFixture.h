#pragma once
// What the writer's tests share: a source tree under a fresh folder with the request that lists
// it, the settings with a recorder of every callback, and extraction of what was written.

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "archive/detail/ArchiveWriteRequest.h"
#include "archive/detail/FileFormatDCF.h"
#include "tests/archive/ReaderFixture.h"

namespace tests {

class WriterFixture : public ::testing::Test {
protected:
    void SetUp() override {
        AddFolder({});  // the caller lists the root too, so that it is made on extraction
        request_.rootPath = SourceRoot().u16string();
        request_.archiveFolder = folder_.Root();
        request_.archiveName = u"archive";
        request_.password = u"secret";
        request_.passwordGiven = true;
        recorder_.Attach(settings_);
        settings_.onArchiveExists = OnArchiveExists;
        settings_.onFileOpening = OnFileOpening;
        settings_.onFileDone = OnFileDone;
        for (const std::uint32_t id :
             {CALLBACK_ARCHIVE_EXISTS, CALLBACK_FILE_OPENING, CALLBACK_FILE_DONE}) {
            settings_.callbackContexts[id] = this;
        }
    }

    // The tree that is archived: "data" in the test folder, which names begin with.
    fs::path SourceRoot() const { return folder_.Native() / "data"; }
    fs::path ArchivePath(const std::string& name = "archive.dcf") const {
        return folder_.Native() / name;
    }

    // Lists a folder and, first, each folder above it that is not listed yet, as a caller's walk
    // of the tree would.
    void AddFolder(const fs::path& relative) {
        if (!relative.empty()) {
            AddFolder(relative.parent_path());
        }
        const fs::path path = relative.empty() ? SourceRoot() : SourceRoot() / relative;
        if (!listedFolders_.insert(path).second) {
            return;
        }
        fs::create_directories(path);
        ArchiveWriteItem item;
        item.path = path.u16string();
        item.isFolder = true;
        request_.items.push_back(std::move(item));
    }
    void ClearItems() {
        request_.items.clear();
        listedFolders_.clear();
        contents_.clear();
        AddFolder({});
    }
    ArchiveWriteItem& AddFile(const fs::path& relative, const Bytes& content) {
        const fs::path path = SourceRoot() / relative;
        AddFolder(relative.parent_path());
        WriteBytes(path, content);
        ArchiveWriteItem item;
        item.path = path.u16string();
        item.size = content.size();
        request_.items.push_back(std::move(item));
        contents_[relative] = content;
        return request_.items.back();
    }

    // Writes with a copy of the request, so that one test may write several times.
    FormatResult Write(DCCFileFormat& format) {
        lastRequest_ = request_;
        return format.WriteArchive(&lastRequest_, &settings_);
    }
    FormatResult Write() { return Write(dcf_); }

    // Extracts `archive` into a fresh "out" folder with a password or a private key.
    FormatResult Extract(DCCFileFormat& format, const fs::path& archive,
                         const std::u16string& password,
                         const Zelmarik::DCCSecurityKey* key = nullptr) {
        fs::remove_all(Out());
        fs::create_directory(Out());
        ArchiveExtractRequest extract;
        extract.sourcePath = archive.u16string();
        extract.targetPath = Out().u16string();
        extract.password = password;
        if (key != nullptr) {
            extract.securityKey = *key;
        }
        DCCArchiveUserSettings settings;
        return format.ExtractArchive(&extract, &settings);
    }
    FormatResult Extract(const std::u16string& password,
                         const Zelmarik::DCCSecurityKey* key = nullptr) {
        return Extract(dcf_, ArchivePath(), password, key);
    }

    // Every file written by AddFile is under out/data with its content.
    void ExpectExtractedTree() const {
        for (const auto& [relative, content] : contents_) {
            SCOPED_TRACE(relative.string());
            EXPECT_EQ(ReadBytes(Out() / "data" / relative), content);
        }
    }

    fs::path Out() const { return folder_.Native() / "out"; }
    // Names in the test folder other than the source tree and the extraction target: archives
    // and any temporary file left behind.
    std::set<std::string> LeftInFolder() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_.Native())) {
            const std::string name = entry.path().filename().string();
            if (name != "data" && name != "out") {
                names.insert(name);
            }
        }
        return names;
    }

    static OverwriteMode OnArchiveExists(const std::u16string* path, void* context) {
        auto& self = *static_cast<WriterFixture*>(context);
        self.askedAbout.push_back(fs::path(*path).filename().string());
        return self.archiveAnswer;
    }

    // Each source file as it is opened (after `redirectOpening` replaced its path) and as it is
    // done, by its name; the cancel flag is set once `cancelAfterFiles` files are done.
    static void OnFileOpening(std::u16string* path, void* context) {
        auto& self = *static_cast<WriterFixture*>(context);
        if (const auto other = self.redirectOpening.find(fs::path(*path).filename());
            other != self.redirectOpening.end()) {
            *path = other->second.u16string();
        }
        self.opened.push_back(fs::path(*path).filename());
    }
    static void OnFileDone(const std::u16string* path, void* context) {
        auto& self = *static_cast<WriterFixture*>(context);
        EXPECT_EQ(fs::path(*path).filename(), self.opened.back());
        self.done.push_back(fs::path(*path).filename());
        if (--self.cancelAfterFiles == 0) {
            self.recorder_.cancel = 1;
        }
    }

    TestFolder folder_;
    ArchiveWriteRequest request_;
    ArchiveWriteRequest lastRequest_;
    DCCArchiveUserSettings settings_;
    Recorder recorder_;
    DCCFileFormatDCF dcf_;
    std::map<fs::path, Bytes> contents_;
    std::set<fs::path> listedFolders_;
    OverwriteMode archiveAnswer = OVERWRITE_REPLACE;
    std::vector<std::string> askedAbout;
    std::map<fs::path, fs::path> redirectOpening;
    std::vector<fs::path> opened;
    std::vector<fs::path> done;
    int cancelAfterFiles = -1;
};

}  // namespace tests
