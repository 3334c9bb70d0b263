// A self-extracting file written by the archive writer around the built stub, started as its
// own process without arguments and driven through its dialog from outside, as a user would;
// then the extracted tree is compared byte for byte, with the tag streams of its files.

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/ArchiveWriteRequest.h"
#include "archive/detail/FileFormatSFX.h"
#include "frontend/LocalizedStrings.h"
#include "frontend/resources/DialogControls.h"
#include "platform/ErrorCodes.h"
#include "platform/TaggedFile.h"
#include "platform/Text.h"
#include "tests/TestFolder.h"
#include "tests/frontend/win32/BuiltStub.h"
#include "tests/frontend/win32/StubProcess.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using tests::StubProcess;

// Wine starts a process in seconds; the deadlines only keep a broken run from hanging.
constexpr DWORD kStartDeadline = 60000;
constexpr DWORD kBoxDeadline = 30000;
constexpr DWORD kRunDeadline = 120000;

const std::u16string kPassword = u"correct horse";

Bytes Noise(std::size_t size, std::uint32_t seed) {
    std::mt19937 random(seed);
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    return bytes;
}

Bytes Text(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

Zelmarik::CDlpCategory Category(std::uint8_t seed, const std::u16string& name) {
    Zelmarik::CDlpCategory category;
    category.Id = Zelmarik::CGuid(
        std::array<std::uint8_t, 16>{seed, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, seed});
    category.Name = name;
    return category;
}

struct SourceFile {
    fs::path relative;  // below the packed folder "data"
    Bytes content;
    std::vector<Zelmarik::CDlpCategory> categories;
};

// The sender's tree: nested folders, an empty folder, an empty file, a name beyond ASCII, a
// file of many pieces, and files with one and with two categories. Names are longer than one
// letter: Wine keeps a stream as a file "<name>:<stream>", which for one letter reads as a drive.
const std::vector<SourceFile>& SourceFiles() {
    static const std::vector<SourceFile> files = {
        {"reports/2021/figures.txt",
         Text("quarterly figures\r\n"),
         {Category(1, u"Finance"), Category(2, u"Legal")}},
        {"reports/2021/empty.bin", {}, {}},
        {u"reports/notes/r\u00e9sum\u00e9.txt", Text("remarques\r\n"), {Category(2, u"Legal")}},
        {"reports/notes/blob.bin", Noise(300000, 7), {}},
    };
    return files;
}
const fs::path kEmptyFolder = "reports/none";

std::string Utf8(const std::u16string& text) {
    return platform::Utf16ToUtf8(text);
}

Bytes ReadBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteBytes(const fs::path& path, const Bytes& content) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(content.data()),
               static_cast<std::streamsize>(content.size()));
}

class SfxDialogEndToEndTest : public ::testing::Test {
protected:
    // One archive for the suite, "archive.exe" in its own folder, sealed with the password.
    static void SetUpTestSuite() {
        LocalizedStrings.BuildStringTable();
        LocalizedStrings.SelectLanguage(u"English");
        archiveFolder_ = new tests::TestFolder;
        const fs::path data = archiveFolder_->Native() / "data";
        ArchiveWriteRequest request;
        request.rootPath = data.u16string();
        request.archiveFolder = archiveFolder_->Root();
        request.archiveName = u"archive";
        request.password = kPassword;
        request.passwordGiven = true;
        for (const fs::path& folder : {data, data / "reports", data / "reports/2021",
                                       data / "reports/notes", data / kEmptyFolder}) {
            fs::create_directories(folder);
            ArchiveWriteItem item;
            item.path = folder.u16string();
            item.isFolder = true;
            request.items.push_back(item);
        }
        for (const SourceFile& file : SourceFiles()) {
            WriteBytes(data / file.relative, file.content);
            ArchiveWriteItem item;
            item.path = (data / file.relative).u16string();
            item.size = file.content.size();
            item.hasCategories = !file.categories.empty();
            for (const Zelmarik::CDlpCategory& category : file.categories) {
                item.categories.Add(category);
            }
            request.items.push_back(item);
        }
        DCCArchiveUserSettings settings;
        DCCFileFormatSFX format(tests::BuiltStubPath());
        ASSERT_EQ(format.WriteArchive(&request, &settings), FORMAT_OK);
        archivePath_ = new std::u16string(request.archiveName);
    }
    void SetUp() override { ASSERT_NE(archivePath_, nullptr) << "the archive was not written"; }
    static void TearDownTestSuite() {
        delete archivePath_;
        delete archiveFolder_;
    }

    // The target typed into the dialog, and where the files land below it: a folder named
    // after the archive, then the packed folder.
    std::u16string Target() const { return targetFolder_.Root(); }
    fs::path Extracted() const { return targetFolder_.Native() / "archive" / "data"; }

    // The dialog of a freshly started archive, on its own folder.
    HWND OpenDialog(const StubProcess& stub) const {
        EXPECT_TRUE(stub.Started());
        const HWND dialog = stub.WaitForWindow(nullptr, kStartDeadline);
        EXPECT_NE(dialog, nullptr);
        EXPECT_EQ(Utf8(tests::WindowCaption(dialog)), "Extract archive");
        EXPECT_EQ(Utf8(tests::ControlText(dialog, IDC_TARGET_FOLDER)),
                  Utf8(archiveFolder_->Root() + u"\\"));
        return dialog;
    }

    static std::u16string Localized(const char16_t* key) {
        return LocalizedStrings.GetLocalizedString(key);
    }

    // Fails with the text of a box that the process still shows, if any.
    static void ExpectEnded(const StubProcess& stub, HWND dialog) {
        if (!stub.WaitForExit(kRunDeadline)) {
            const HWND box = stub.WaitForWindow(dialog, 0);
            FAIL() << "the stub still runs; a box says: " << Utf8(tests::MessageBoxText(box));
        }
        EXPECT_EQ(stub.ExitCode(), 0u);
    }

    static std::u16string ArchivePath() { return *archivePath_; }

    static tests::TestFolder* archiveFolder_;
    static std::u16string* archivePath_;
    tests::TestFolder targetFolder_;
};

tests::TestFolder* SfxDialogEndToEndTest::archiveFolder_ = nullptr;
std::u16string* SfxDialogEndToEndTest::archivePath_ = nullptr;

TEST_F(SfxDialogEndToEndTest, PasswordTypedIntoTheDialogExtractsTheTreeWithItsTags) {
    // One file is there already: the run asks before it replaces it.
    const fs::path existing = (Extracted() / "reports/notes/blob.bin").make_preferred();
    WriteBytes(existing, Text("older"));

    StubProcess stub(ArchivePath(), archiveFolder_->Root());
    const HWND dialog = OpenDialog(stub);
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(tests::SetControlText(dialog, IDC_TARGET_FOLDER, Target()));
    ASSERT_TRUE(tests::SetControlText(dialog, IDC_PASSWORD, kPassword));
    tests::PressButton(dialog, IDC_EXTRACT);

    const HWND question = stub.WaitForWindow(dialog, kBoxDeadline);
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(GetWindow(question, GW_OWNER), dialog);
    EXPECT_EQ(Utf8(tests::WindowCaption(question)), Utf8(Localized(u"IDS_QUESTION")));
    EXPECT_EQ(Utf8(tests::MessageBoxText(question)),
              Utf8(Localized(u"IDS_REPLACE_FILE") + u"\r\n" + existing.u16string()));
    tests::PressButton(question, IDYES);
    // After a successful run the dialog ends without a word, and the process with it.
    ExpectEnded(stub, dialog);

    for (const SourceFile& file : SourceFiles()) {
        SCOPED_TRACE(file.relative.string());
        const fs::path extracted = Extracted() / file.relative;
        EXPECT_EQ(ReadBytes(extracted), file.content);
        std::vector<std::uint8_t> stream;
        const platform::ErrorCode read =
            platform::ReadTagStream(extracted.u16string() + u":ZelTag5", stream);
        if (file.categories.empty()) {
            EXPECT_EQ(read, platform::kErrorFileNotFound);
            continue;
        }
        ASSERT_EQ(read, platform::kErrorSuccess);
        Bytes identifiers;
        for (const Zelmarik::CDlpCategory& category : file.categories) {
            identifiers.insert(identifiers.end(), category.Id.Bytes.begin(),
                               category.Id.Bytes.end());
        }
        EXPECT_EQ(stream, identifiers);
    }
    EXPECT_TRUE(fs::is_directory(Extracted() / kEmptyFolder));
}

}  // namespace
