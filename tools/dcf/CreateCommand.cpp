// dcf create: a new archive, plain or self-extracting, of files and folders.
#include <array>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "archive/Archive.h"
#include "frontend/terminal/TerminalUi.h"
#include "platform/File.h"
#include "platform/Text.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ArchiveRun.h"
#include "tools/dcf/CategoryManifest.h"
#include "tools/dcf/CommandLine.h"
#include "tools/dcf/Commands.h"
#include "tools/dcf/KeyInput.h"
#include "tools/dcf/ShippedStubs.h"
#include "tools/dcf/SourceWalk.h"
#include "tools/dcf/ToolOutput.h"

namespace dcftool {

namespace {

namespace fs = std::filesystem;

const std::string kCommand = "create";

struct CreateOptions {
    std::string archive;
    std::vector<std::string> paths;
    std::vector<std::string> excluded;
    NewPasswordOptions password;
    std::string recipient;
    bool sfx = false;
    std::string stub;
    std::string stubFor{kStubPlatforms.front().name};
    bool stubForGiven = false;
    std::string categories;
    std::string overwrite = "ask";
    unsigned threads = 0;
    bool quiet = false;
};

// What happens to an archive that exists: replace goes ahead without a question, the others
// answer onArchiveExists; "ask" asks on the terminal.
const std::map<std::string, OverwriteMode> kAnswers = {{"replace", OVERWRITE_REPLACE},
                                                       {"skip", OVERWRITE_SKIP},
                                                       {"numbered", OVERWRITE_NUMBERED},
                                                       {"ask", OVERWRITE_ASK},
                                                       {"cancel", OVERWRITE_CANCEL}};

// The choice of --overwrite, and the answer that onArchiveExists gave, if it was asked.
struct ArchiveExistsAnswer {
    OverwriteMode option = OVERWRITE_ASK;
    OverwriteMode given = 0;
};

OverwriteMode AnswerOfOption(const std::u16string*, void* context) {
    auto& answer = *static_cast<ArchiveExistsAnswer*>(context);
    answer.given = answer.option;
    return answer.given;
}

OverwriteMode AskAboutArchive(const std::u16string* path, void* context) {
    auto& answer = *static_cast<ArchiveExistsAnswer*>(context);
    static constexpr std::string_view kChoices[] = {"yes", "no", "rename the new one", "quit"};
    static constexpr OverwriteMode kAnswers[] = {OVERWRITE_REPLACE, OVERWRITE_SKIP,
                                                 OVERWRITE_NUMBERED, OVERWRITE_CANCEL};
    const std::optional<std::size_t> choice =
        terminal::AskChoice(platform::Utf16ToUtf8(*path) + " exists. Replace it? ", kChoices);
    answer.given = choice ? kAnswers[*choice] : OVERWRITE_CANCEL;
    return answer.given;
}

// Replace needs no question; every other choice is the answer to the question of mode 103.
void SetOverwrite(const std::string& option, ArchiveExistsAnswer& answer,
                  DCCArchiveUserSettings& settings) {
    answer.option = kAnswers.at(option);
    if (answer.option == OVERWRITE_REPLACE) {
        settings.overwriteMode = OVERWRITE_REPLACE;
        return;
    }
    settings.overwriteMode = OVERWRITE_ASK;
    settings.callbackContexts[CALLBACK_ARCHIVE_EXISTS] = &answer;
    if (answer.option != OVERWRITE_ASK) {
        settings.onArchiveExists = AnswerOfOption;
    } else if (platform::HasTerminal()) {
        settings.onArchiveExists = AskAboutArchive;
    }
}

// The stub's permission to run goes with it into the self-extracting file.
void CopyRunPermission(const std::u16string& stub, const std::u16string& archive) {
    std::error_code error;
    const fs::perms run = fs::status(stub, error).permissions() &
                          (fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec);
    if (!error) {
        fs::permissions(archive, run, fs::perm_options::add, error);
    }
}

// Ends the command unless a file can be made in the archive's folder: the writer's own failure
// there would not say why.
void CheckFolderWritable(const std::string& archive, const std::u16string& folder) {
    std::u16string probe;
    const platform::ErrorCode error = platform::CreateTempFile(folder, u"st", probe);
    if (error != platform::kErrorSuccess) {
        FailWith(kCommand, archive + ": can't write in its folder: " + DescribeError(error),
                 kExitIo);
    }
    platform::RemoveFile(probe);
}

void RunCreate(const CreateOptions& options) {
    if (!options.sfx && (!options.stub.empty() || options.stubForGiven)) {
        FailWith(kCommand,
                 std::string(options.stub.empty() ? "--stub-for" : "--stub") + " goes with --sfx",
                 kExitUsage);
    }
    std::unique_ptr<DCCFileFormat> format;
    ChosenStub stub;
    if (options.sfx) {
        stub = ChooseStub(kCommand, options.stub, options.stubFor);
        format = std::make_unique<DCCFileFormatSFX>(stub.path, stub.windows ? u".exe" : u"");
    } else {
        format = std::make_unique<DCCFileFormatDCF>();
    }
    const fs::path archive = fs::absolute(fs::path(PathFromArgument(options.archive)));
    std::u16string archivePath = archive.u16string();
    if (!format->HasOwnExtension(archivePath)) {
        archivePath += format->Extension();
    }

    ArchiveWriteRequest request;
    request.replaceWhenComplete = true;  // nothing is lost to a failure or an interrupt
    WalkOptions walk;
    walk.archive = archivePath;
    for (const std::string& pattern : options.excluded) {
        walk.excluded.push_back(platform::Utf8ToUtf16(pattern));
    }
    SourceListing listing = ListSources(kCommand, options.paths, walk);
    if (!options.categories.empty()) {
        ApplyCategoryManifest(kCommand, options.categories, listing);
    }
    if (!options.recipient.empty()) {
        LoadRecipient(kCommand, options.recipient, request);
    }
    LoadNewPassword(kCommand, options.archive, options.password, request.sealForKey, request);
    request.rootPath = listing.rootPath;
    request.items = std::move(listing.items);
    request.archiveFolder = archive.parent_path().u16string();
    request.archiveName = archive.filename().u16string();
    CheckFolderWritable(options.archive, request.archiveFolder);

    ArchiveRun run(!options.quiet);
    run.report.totalSize = listing.totalSize;
    ReadRealPaths(listing, run.settings);
    ArchiveExistsAnswer answer;
    SetOverwrite(options.overwrite, answer, run.settings);
    run.settings.codecWorkers = options.threads;
    const FormatResult result = format->WriteArchive(&request, &run.settings);
    run.EndProgress();
    if (result == FORMAT_CANCELLED && run.Interrupted()) {
        FailWith(kCommand, options.archive + ": cancelled by Ctrl-C; nothing was written",
                 kExitCancelled);
    }
    if (result == FORMAT_CANCELLED && run.settings.onArchiveExists == nullptr &&
        run.settings.overwriteMode == OVERWRITE_ASK) {
        FailWith(kCommand, options.archive + ": exists; choose what to do with --overwrite",
                 kExitCancelled);
    }
    if (result != FORMAT_OK) {
        FailWithResult(kCommand, options.archive, result);
    }
    const std::string written = platform::Utf16ToUtf8(request.archiveName);
    if (answer.given == OVERWRITE_SKIP) {
        if (!options.quiet) {
            std::cout << written << " exists and stays as it was\n";
        }
        return;
    }
    if (options.sfx) {
        CopyRunPermission(stub.path, request.archiveName);
    }
    if (!options.quiet) {
        std::cout << "Created " << written << ": " << Counted(listing.files, "file") << ", "
                  << Counted(listing.folders, "folder") << ", " << listing.totalSize << " bytes"
                  << (listing.leftOut == 0
                          ? ""
                          : "; " + std::to_string(listing.leftOut) + " left out, as noted above")
                  << '\n';
    }
}

}  // namespace

void AddCreateCommand(CLI::App& app) {
    auto options = std::make_shared<CreateOptions>();
    CLI::App* command = app.add_subcommand(
        "create", "Create an archive (plain .dcf or self-extracting) of files and folders");
    command->footer(
        "Each PATH is stored under its own last name: 'dcf create a.dcf data/reports "
        "~/notes.txt' stores reports/2021/a.txt and notes.txt. Without a password option the "
        "password is asked twice on the terminal. What can't be stored (unreadable, not UTF-8, "
        "a name Windows can't extract, --exclude) is left out with a note.");
    command
        ->add_option("ARCHIVE", options->archive,
                     "The new archive; .dcf (or .exe with a Windows stub) is added when missing")
        ->required();
    command->add_option("PATH", options->paths, "Files and folders to store")->required();
    command
        ->add_option("--exclude", options->excluded,
                     "Leave out what matches PATTERN (* ? [..]) by its name in the archive or "
                     "its last name; may be given again")
        ->type_name("PATTERN")
        ->allow_extra_args(false);
    auto* file = command->add_option("--password-file", options->password.passwordFile,
                                     "Read the password from the first line of a UTF-8 file");
    auto* input = command->add_flag("--password-stdin", options->password.passwordStdin,
                                    "Read the password from the first line of standard input");
    auto* none = command->add_flag("--no-password", options->password.noPassword,
                                   "No password: only the recipient's private key opens it");
    file->excludes(input)->excludes(none);
    input->excludes(none);
    command->add_option("--recipient", options->recipient,
                        "Seal the archive also for this public key (PREFIX.pubkey of keygen)");
    command->add_flag("--sfx", options->sfx, "Make a self-extracting program");
    std::vector<std::string> platforms;
    std::string platformHelp = "Where the recipient runs the self-extracting file:";
    for (const StubPlatform& platform : kStubPlatforms) {
        platforms.emplace_back(platform.name);
        platformHelp += "\n  " + platforms.back() + ": " + std::string(platform.recipient);
    }
    auto* platform = command->add_option("--stub-for", options->stubFor, platformHelp)
                         ->check(CLI::IsMember(platforms))
                         ->capture_default_str();
    command
        ->add_option("--stub", options->stub, "The stub program of --sfx, instead of a shipped one")
        ->excludes(platform);
    command->add_option("--categories", options->categories,
                        "JSON manifest: {\"dir/file\": [{\"id\": \"<guid>\", \"name\": ...}]}");
    command
        ->add_option("--overwrite", options->overwrite,
                     "When the archive exists: replace, skip, numbered, ask or cancel")
        ->check(CLI::IsMember({"replace", "skip", "numbered", "ask", "cancel"}))
        ->capture_default_str();
    AddThreadsOption(*command, options->threads);
    command->add_flag("-q,--quiet", options->quiet, "No progress and no summary");
    command->callback([options, platform] {
        options->stubForGiven = platform->count() > 0;
        RunCreate(*options);
    });
}

}  // namespace dcftool
