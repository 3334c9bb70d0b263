// The extraction dialog driven by messages, with its message boxes answered by the test and
// real self-extracting files on disk.

#include "frontend/win32/ExtractionDialog.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "archive/detail/FileFormatSFX.h"
#include "archive/detail/SfxTrailer.h"
#include "frontend/ExtractionDriver.h"
#include "frontend/ExtractionParameters.h"
#include "frontend/InteractiveFrontEnd.h"
#include "frontend/LocalizedStrings.h"
#include "frontend/StubEntry.h"
#include "frontend/resources/DialogControls.h"
#include "platform/Module.h"
#include "platform/Text.h"
#include "tests/TestFolder.h"
#include "tests/archive/ImageBuilder.h"
#include "tests/frontend/win32/DialogHarness.h"

namespace {

using tests::Bytes;
using tests::DialogUnderTest;
using tests::EntrySpec;
using tests::ReadBytes;
using tests::WriteBytes;
namespace fs = std::filesystem;

constexpr int kProgressRowsHeight = 60;
const std::u16string kExtractionFailed = u"File couldn't be extracted (wrong password?).";
const std::u16string kReplaceQuestion = u"File already exists. Do you want to replace it?\r\n";

class ExtractionDialogTest : public ::testing::Test {
protected:
    void SetUp() override {
        ExtractionParameters = CExtractionParameters();
        LocalizedStrings.BuildStringTable();
        LocalizedStrings.SelectLanguage(u"English");
        ExtractionParameters.sourcePath = folder_.Path(u"archive.exe");
    }
    void TearDown() override { ExtractionParameters = CExtractionParameters(); }

    // Where the dialog extracts to when the target field holds the test folder, which has no
    // final separator: a folder named after the running program, without its ".exe".
    std::u16string Target() const { return folder_.Root() + u"\\frontend_tests\\"; }

    // A stub's worth of bytes, the image and the trailer, as the dialog's source.
    void WriteArchive(const std::vector<EntrySpec>& entries,
                      const tests::ImageSettings& settings = {}) const {
        Bytes file(4096, 'M');
        const Bytes image = tests::BuildImage(settings, {}, entries);
        const SfxTrailerBytes trailer = BuildSfxTrailer(image.size());
        file.insert(file.end(), image.begin(), image.end());
        file.insert(file.end(), trailer.begin(), trailer.end());
        WriteBytes(ExtractionParameters.sourcePath, file);
    }

    // Starts an extraction with a password into the test folder.
    void StartWithPassword(const DialogUnderTest& dialog, const std::u16string& password) const {
        dialog.Type(IDC_TARGET_FOLDER, folder_.Root());
        dialog.Type(IDC_PASSWORD, password);
        dialog.Click(IDC_EXTRACT);
    }

    // A box owned by the dialog, with its text, caption and icon.
    static void ExpectBox(const tests::RecordedBox& box, const DialogUnderTest& dialog,
                          const std::u16string& text, const std::u16string& caption = u"Error",
                          UINT type = MB_ICONERROR) {
        EXPECT_TRUE(box.text == text) << platform::Utf16ToUtf8(box.text);
        EXPECT_TRUE(box.caption == caption);
        EXPECT_EQ(box.type, type);
        EXPECT_EQ(box.owner, dialog.Handle());
    }

    static void ExpectInputsEnabled(const DialogUnderTest& dialog, bool enabled) {
        for (const int id : {IDC_TARGET_FOLDER, IDC_BROWSE_FOLDER, IDC_PASSWORD, IDC_KEY_PATH,
                             IDC_BROWSE_KEY, IDC_EXTRACT}) {
            EXPECT_EQ(dialog.Enabled(id), enabled) << "control " << id;
        }
        EXPECT_TRUE(dialog.Enabled(IDC_CANCEL_EXTRACTION));
    }

    tests::TestFolder folder_;
    tests::MessageBoxScript boxes_;
};

TEST_F(ExtractionDialogTest, OpensWithoutProgressRowsOnTheProgramFolder) {
    DialogUnderTest dialog;
    EXPECT_EQ(CurrentDialog.load(), dialog.Handle());
    // The progress bar lies below the visible client area.
    RECT client{}, bar{};
    GetClientRect(dialog.Handle(), &client);
    GetWindowRect(dialog.Item(IDC_PROGRESS_BAR), &bar);
    MapWindowPoints(nullptr, dialog.Handle(), reinterpret_cast<POINT*>(&bar), 2);
    EXPECT_GE(bar.top, client.bottom);
    EXPECT_TRUE(dialog.Text(IDC_TARGET_FOLDER) == platform::GetModuleDirectory());
    EXPECT_EQ(GetFocus(), dialog.Item(IDC_PASSWORD));
    ExpectInputsEnabled(dialog, true);
    EXPECT_EQ(LOWORD(SendMessageW(dialog.Handle(), DM_GETDEFID, 0, 0)), IDC_EXTRACT);
}

// Each picker fills its field; a cancelled or empty choice keeps what was there. A key path
// locks the password.
TEST_F(ExtractionDialogTest, PickersFillTheirFieldsAndACancelledChoiceKeepsThem) {
    tests::PickerScript pickers;
    DialogUnderTest dialog;
    const std::u16string key = folder_.Path(u"recipient.privkey");
    for (const std::u16string& choice : {folder_.Root(), std::u16string()}) {
        pickers.Choose(choice);
        dialog.Click(IDC_BROWSE_FOLDER);
        pickers.Choose(choice.empty() ? choice : key);
        dialog.Click(IDC_BROWSE_KEY);
        EXPECT_TRUE(dialog.Text(IDC_TARGET_FOLDER) == folder_.Root());
        EXPECT_TRUE(dialog.Text(IDC_KEY_PATH) == key);
        EXPECT_FALSE(dialog.Enabled(IDC_PASSWORD));
        EXPECT_TRUE(dialog.Enabled(IDC_BROWSE_KEY));
    }
    EXPECT_EQ(pickers.FolderCalls(), 2);
    EXPECT_EQ(pickers.FileCalls(), 2);
    EXPECT_EQ(pickers.LastFileOwner(), dialog.Handle());

    // The picked folder has no final separator and still gets exactly one before the name.
    dialog.Type(IDC_KEY_PATH, u"");
    dialog.Type(IDC_PASSWORD, u"secret");
    dialog.Click(IDC_EXTRACT);
    EXPECT_TRUE(ExtractionParameters.targetPath == Target());
    ASSERT_TRUE(tests::PumpUntil([&] { return boxes_.Boxes().size() == 1; }));  // no archive there
}

TEST_F(ExtractionDialogTest, MissingOrUnreadableCredentialsAreRefusedInPlace) {
    DialogUnderTest dialog;
    const int height = dialog.Height();
    dialog.Click(IDC_EXTRACT);
    // A key path is tried first; the typed password then has no effect.
    dialog.Type(IDC_PASSWORD, u"typed");
    dialog.Type(IDC_KEY_PATH, folder_.Path(u"missing.privkey"));
    dialog.Click(IDC_EXTRACT);

    const auto boxes = boxes_.Boxes();
    ASSERT_EQ(boxes.size(), 2u);
    ExpectBox(boxes[0], dialog,
              u"Password or path to a private key file is required to extract the archive.");
    ExpectBox(boxes[1], dialog, u"Unable to read private key from the selected location.");
    EXPECT_FALSE(ExtractionParameters.passwordGiven);
    EXPECT_FALSE(ExtractionParameters.keyGiven);
    EXPECT_EQ(dialog.Height(), height);
    EXPECT_FALSE(dialog.Ended());
    EXPECT_TRUE(dialog.Enabled(IDC_EXTRACT));
    EXPECT_FALSE(fs::exists(fs::path(Target())));
}

TEST_F(ExtractionDialogTest, EarlyFailureLeavesTheDialogOpenAndItGrowsOnlyOnce) {
    DialogUnderTest dialog;  // the source file does not exist
    const int collapsed = dialog.Height();
    for (int attempt = 1; attempt <= 2; ++attempt) {
        SCOPED_TRACE(attempt);
        StartWithPassword(dialog, u"secret");
        ASSERT_TRUE(tests::PumpUntil([&] {
            return boxes_.Boxes().size() == static_cast<std::size_t>(attempt) &&
                   dialog.Enabled(IDC_EXTRACT) && !dialog.Shown(IDC_PROGRESS_BAR);
        }));
        ExpectBox(boxes_.Boxes().back(), dialog, kExtractionFailed);
        // Open: full height, inputs back, progress bar hidden, still there.
        EXPECT_EQ(dialog.Height(), collapsed + kProgressRowsHeight);
        ExpectInputsEnabled(dialog, true);
        EXPECT_FALSE(dialog.Shown(IDC_PROGRESS_BAR));
        EXPECT_FALSE(dialog.Ended());
    }
}

TEST_F(ExtractionDialogTest, PasswordExtractionRunsToTheEndAndEndsTheDialog) {
    const Bytes big = tests::Noise(600000, 3);
    const Bytes small = tests::Noise(100, 4);
    WriteArchive({{u"\\big.bin", big, {}}, {u"\\small.txt", small, {}}});
    DialogUnderTest dialog;
    const int collapsed = dialog.Height();
    StartWithPassword(dialog, u"secret");
    // Running, until the worker's first call reaches the dialog.
    EXPECT_EQ(dialog.Height(), collapsed + kProgressRowsHeight);
    ExpectInputsEnabled(dialog, false);
    EXPECT_TRUE(dialog.Shown(IDC_PROGRESS_BAR));
    EXPECT_TRUE(ExtractionParameters.passwordGiven);
    EXPECT_TRUE(ExtractionParameters.targetPath == Target());

    ASSERT_TRUE(tests::PumpUntil([&] { return dialog.Ended(); }));
    EXPECT_EQ(ReadBytes(Target() + u"big.bin"), big);
    EXPECT_EQ(ReadBytes(Target() + u"small.txt"), small);
    EXPECT_EQ(SendMessageW(dialog.Item(IDC_PROGRESS_BAR), PBM_GETPOS, 0, 0), 100);
    EXPECT_TRUE(dialog.Text(IDC_STATUS_LINE) == u"Extracting file: " + Target() + u"small.txt");
    EXPECT_EQ(boxes_.Boxes().size(), 0u);
}

TEST_F(ExtractionDialogTest, WrongPasswordIsToldThenEndsTheDialogWithoutFiles) {
    WriteArchive({{u"\\f.txt", Bytes(10, 'f'), {}}});
    DialogUnderTest dialog;
    bool endedBeforeTheBox = true;
    boxes_.BeforeAnswer([&] { endedBeforeTheBox = dialog.Ended(); });
    StartWithPassword(dialog, u"wrong");
    ASSERT_TRUE(tests::PumpUntil([&] { return dialog.Ended(); }));
    EXPECT_FALSE(fs::exists(fs::path(Target() + u"f.txt")));
    const auto boxes = boxes_.Boxes();
    ASSERT_EQ(boxes.size(), 1u);
    ExpectBox(boxes[0], dialog, kExtractionFailed);
    EXPECT_FALSE(endedBeforeTheBox);
}

TEST_F(ExtractionDialogTest, ReplaceQuestionsAnsweredYesNoThenCancel) {
    const Bytes fresh(20, 'n');
    const Bytes old(10, 'o');
    WriteArchive(
        {{u"\\a", fresh, {}}, {u"\\b", fresh, {}}, {u"\\c", fresh, {}}, {u"\\d", fresh, {}}});
    for (const char16_t* name : {u"a", u"b", u"c", u"d"}) {
        WriteBytes(Target() + name, old);
    }
    boxes_.Answer({IDYES, IDNO, IDCANCEL});
    DialogUnderTest dialog;
    StartWithPassword(dialog, u"secret");
    ASSERT_TRUE(tests::PumpUntil([&] { return dialog.Ended(); }));

    EXPECT_EQ(ReadBytes(Target() + u"a"), fresh);
    for (const char16_t* name : {u"b", u"c", u"d"}) {
        EXPECT_EQ(ReadBytes(Target() + name), old);
    }
    const auto boxes = boxes_.Boxes();
    ASSERT_EQ(boxes.size(), 3u);  // none for d: Cancel stopped the extraction
    const char16_t* asked[] = {u"a", u"b", u"c"};
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        ExpectBox(boxes[i], dialog, kReplaceQuestion + Target() + asked[i], u"Question",
                  MB_YESNOCANCEL | MB_ICONQUESTION);
    }
}

TEST_F(ExtractionDialogTest, CancelWhileRunningStopsAndKeepsFinishedFiles) {
    const Bytes content(30, 'x');
    WriteArchive(
        {{u"\\first", content, {}}, {u"\\second", content, {}}, {u"\\third", content, {}}});
    WriteBytes(Target() + u"second", Bytes(5, 'o'));
    DialogUnderTest dialog;
    // The user presses Cancel while the question about the second file is up, then answers No.
    bool endedByCancel = true;
    boxes_.BeforeAnswer([&] {
        SendMessageW(dialog.Handle(), WM_COMMAND, MAKEWPARAM(IDC_CANCEL_EXTRACTION, BN_CLICKED), 0);
        endedByCancel = dialog.Ended();
    });
    boxes_.Answer({IDNO});
    StartWithPassword(dialog, u"secret");
    ASSERT_TRUE(tests::PumpUntil([&] { return dialog.Ended(); }));

    EXPECT_FALSE(endedByCancel);  // the worker ended the dialog, not the button
    EXPECT_EQ(ReadBytes(Target() + u"first"), content);
    EXPECT_EQ(ReadBytes(Target() + u"second"), Bytes(5, 'o'));
    EXPECT_FALSE(fs::exists(fs::path(Target() + u"third")));
    EXPECT_EQ(boxes_.Boxes().size(), 1u);
}

TEST_F(ExtractionDialogTest, IdleDialogEndsByCancelCloseAndPrivateMessagesButNotEscape) {
    const std::function<void(HWND)> enders[] = {
        [](HWND d) {
            SendMessageW(d, WM_COMMAND, MAKEWPARAM(IDC_CANCEL_EXTRACTION, BN_CLICKED), 0);
        },
        [](HWND d) { SendMessageW(d, WM_CLOSE, 0, 0); },
        [](HWND d) { SendMessageW(d, kEndDialogRequest, 0, 0); },
        [](HWND d) { SendMessageW(d, kExtractionEnded, 0, 0); },
    };
    for (const auto& end : enders) {
        DialogUnderTest dialog;
        SendMessageW(dialog.Handle(), WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
        EXPECT_FALSE(dialog.Ended());
        end(dialog.Handle());
        EXPECT_TRUE(dialog.Ended());
    }
}

// Plays the user of a modal dialog: waits for the next dialog, reads its caption, closes it.
class DialogCloser {
public:
    DialogCloser() {
        CurrentDialog.store(nullptr);
        user_ = std::thread([this] {
            HWND dialog = nullptr;
            for (int i = 0; i < 6000 && dialog == nullptr; ++i) {
                Sleep(10);
                dialog = CurrentDialog.load();
            }
            wchar_t text[256] = L"";
            GetWindowTextW(dialog, text, 256);
            caption_ = reinterpret_cast<const char16_t*>(text);
            PostMessageW(dialog, WM_CLOSE, 0, 0);
        });
    }
    // The caption of the dialog it closed.
    std::u16string Caption() {
        user_.join();
        return caption_;
    }

private:
    std::thread user_;
    std::u16string caption_;
};

TEST_F(ExtractionDialogTest, TheStubWithoutKeyAndTargetShowsTheModalDialogOfItsLanguage) {
    for (const auto& tokens : std::vector<std::vector<std::u16string>>{{}, {u"-key", u"k"}}) {
        ExtractionParameters = CExtractionParameters();
        CCommandLine line;
        line.Assign(tokens);
        DialogCloser user;
        EXPECT_EQ(RunStub(line), 0);
        EXPECT_TRUE(user.Caption() == u"Extract archive");
        EXPECT_FALSE(ExtractionParameters.consoleMode);
        EXPECT_TRUE(ExtractionParameters.sourcePath == platform::ModulePath());
    }
    LocalizedStrings.SelectLanguage(u"Deutsch");
    DialogCloser user;
    RunInteractiveFrontEnd();
    EXPECT_TRUE(user.Caption() == u"Extrahieren des Archivs ");
}

}  // namespace
