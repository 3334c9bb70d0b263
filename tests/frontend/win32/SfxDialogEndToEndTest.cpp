// A self-extracting file written by the archive writer around the built stub, started as its
// own process without arguments and driven through its dialog from outside, as a user would.
// What the dialog does inside is tested in process; the tree and its tag streams from the stub's
// command line by the end-to-end script.

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/ArchiveWriteRequest.h"
#include "archive/detail/FileFormatSFX.h"
#include "frontend/resources/DialogControls.h"
#include "platform/Text.h"
#include "tests/TestFolder.h"
#include "tests/frontend/win32/BuiltStub.h"
#include "tests/frontend/win32/StubProcess.h"

namespace {

namespace fs = std::filesystem;
using tests::Bytes;

// Wine starts a process in seconds; the deadlines only keep a broken run from hanging.
constexpr DWORD kStartDeadline = 60000;
constexpr DWORD kRunDeadline = 120000;

std::string Utf8(const std::u16string& text) {
    return platform::Utf16ToUtf8(text);
}

TEST(SfxDialogEndToEndTest, PasswordTypedIntoTheStubsDialogExtractsTheArchive) {
    // "archive.exe" in a folder of its own, holding data\notes\blob.bin, sealed with a password.
    tests::TestFolder archiveFolder;
    const fs::path data = archiveFolder.Native() / "data";
    const Bytes blob(300000, 'b');
    tests::WriteBytes(data / "notes" / "blob.bin", blob);
    ArchiveWriteRequest request;
    request.rootPath = data.u16string();
    request.archiveFolder = archiveFolder.Root();
    request.archiveName = u"archive";
    request.password = u"correct horse";
    request.passwordGiven = true;
    for (const fs::path& path : {data, data / "notes", data / "notes" / "blob.bin"}) {
        ArchiveWriteItem item;
        item.path = path.u16string();
        item.isFolder = fs::is_directory(path);
        item.size = item.isFolder ? 0 : blob.size();
        request.items.push_back(item);
    }
    DCCArchiveUserSettings settings;
    DCCFileFormatSFX format(tests::BuiltStubPath());
    ASSERT_EQ(format.WriteArchive(&request, &settings), FORMAT_OK);

    tests::StubProcess stub(request.archiveName, archiveFolder.Root());
    ASSERT_TRUE(stub.Started());
    const HWND dialog = stub.WaitForWindow(nullptr, kStartDeadline);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(Utf8(tests::WindowCaption(dialog)), "Extract archive");
    // It opens on the archive's own folder.
    EXPECT_EQ(Utf8(tests::ControlText(dialog, IDC_TARGET_FOLDER)),
              Utf8(archiveFolder.Root() + u"\\"));

    tests::TestFolder target;
    ASSERT_TRUE(tests::SetControlText(dialog, IDC_TARGET_FOLDER, target.Root()));
    ASSERT_TRUE(tests::SetControlText(dialog, IDC_PASSWORD, u"correct horse"));
    tests::PressButton(dialog, IDC_EXTRACT);
    // After a successful run the dialog ends without a word, and the process with it.
    if (!stub.WaitForExit(kRunDeadline)) {
        constexpr int kMessageBoxText = 0xFFFF;  // the static control that holds a box's text
        FAIL() << "the stub still runs; a box says: "
               << Utf8(tests::ControlText(stub.WaitForWindow(dialog, 0), kMessageBoxText));
    }
    EXPECT_EQ(stub.ExitCode(), 0u);
    // Below the target: a folder named after the archive, then the packed folder.
    EXPECT_EQ(tests::ReadBytes(target.Native() / "archive" / "data" / "notes" / "blob.bin"), blob);
}

}  // namespace
