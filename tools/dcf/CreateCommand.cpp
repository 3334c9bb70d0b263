// dcf create: a new archive, plain or self-extracting, of files and folders.
#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "archive/DcfRecords.h"
#include "archive/FileFormatDCF.h"
#include "archive/FileFormatSFX.h"
#include "crypto/Rsa.h"
#include "platform/File.h"
#include "platform/SecureMemory.h"
#include "platform/Terminal.h"
#include "platform/Text.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ArchiveRun.h"
#include "tools/dcf/ArchiveSource.h"
#include "tools/dcf/CategoryManifest.h"
#include "tools/dcf/Commands.h"
#include "tools/dcf/ReplaceQuestion.h"
#include "tools/dcf/ShippedStubs.h"
#include "tools/dcf/SourceWalk.h"
#include "tools/dcf/ToolOutput.h"

namespace dcf {

namespace {

namespace fs = std::filesystem;

const std::string kCommand = "create";

struct CreateOptions {
    std::string archive;
    std::vector<std::string> paths;
    std::string passwordFile;
    bool passwordStdin = false;
    bool noPassword = false;
    std::string recipient;
    bool sfx = false;
    std::string stub;
    std::string stubFor{kStubPlatforms.front().name};
    std::string categories;
    std::string overwrite = "ask";
    bool quiet = false;
};

// What happens to an archive that exists: replace goes ahead without a question, the others
// answer onArchiveExists; "ask" asks on the terminal.
const std::map<std::string, OverwriteMode> kAnswers = {{"replace", OVERWRITE_REPLACE},
                                                       {"skip", OVERWRITE_SKIP},
                                                       {"numbered", OVERWRITE_NUMBERED},
                                                       {"ask", OVERWRITE_ASK},
                                                       {"cancel", OVERWRITE_CANCEL}};

// The password typed twice without echo; ends the command when the two differ.
std::string AskNewPassword(const std::string& archive) {
    std::string first;
    std::string second;
    std::cerr << "Password for " << archive << ": " << std::flush;
    bool read = platform::ReadTerminalLine(first, false);
    std::cerr << '\n';
    if (read) {
        std::cerr << "Repeat the password: " << std::flush;
        read = platform::ReadTerminalLine(second, false);
        std::cerr << '\n';
    }
    const bool same = first == second;
    platform::SecureWipe(second.data(), second.size());
    if (!read) {
        platform::SecureWipe(first.data(), first.size());
        FailWith(kCommand, "no password entered", kExitCancelled);
    }
    if (!same) {
        platform::SecureWipe(first.data(), first.size());
        FailWith(kCommand, "the two passwords differ", kExitUsage);
    }
    return first;
}

void LoadPassword(const CreateOptions& options, ArchiveWriteRequest& request) {
    if (options.noPassword) {
        if (options.recipient.empty()) {
            FailWith(kCommand, "--no-password needs --recipient: nothing could open the archive",
                     kExitUsage);
        }
        return;
    }
    std::string password;
    if (!options.passwordFile.empty()) {
        password = ReadPasswordFile(kCommand, options.passwordFile);
    } else if (options.passwordStdin) {
        std::getline(std::cin, password);
        password = FirstLine(password);
    } else if (platform::IsInteractiveTerminal()) {
        password = AskNewPassword(options.archive);
    } else {
        FailWith(kCommand, "give --password-file, --password-stdin or --no-password", kExitUsage);
    }
    request.password = platform::Utf8ToUtf16(password);
    request.passwordGiven = true;
    platform::SecureWipe(password.data(), password.size());
    if (!dcf::PasswordBytes(request.password)) {
        FailWith(kCommand, "the password is longer than 64 bytes", kExitUsage);
    }
}

// The recipient's public key text: 1024 hexadecimal digits, line ends and blanks ignored, of
// a modulus that can seal a key block.
void LoadRecipient(const std::string& path, ArchiveWriteRequest& request) {
    std::ifstream in(fs::path(PathFromArgument(path)), std::ios::binary);
    if (!in) {
        FailWith(kCommand, path + ": the public key can't be read", kExitIo);
    }
    // Far more than the digits with any line ends; a larger file is not a key.
    constexpr std::size_t kLongestKeyFile = 64 * 1024;
    std::string text(kLongestKeyFile + 1, '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(in.gcount()));
    std::string digits;
    for (const char c : text) {
        if (std::isxdigit(static_cast<unsigned char>(c))) {
            digits.push_back(c);
        } else if (!std::isspace(static_cast<unsigned char>(c))) {
            digits.clear();
            break;
        }
    }
    if (text.size() > kLongestKeyFile ||
        digits.size() != Zelmarik::DCCSecurityKey::kPublicKeyDigits) {
        FailWith(kCommand, path + ": not a public key (1024 hexadecimal digits)", kExitBadKey);
    }
    std::array<std::uint32_t, Zelmarik::kRsaNumberWords> modulus{};
    Zelmarik::DCRSA::NumberFromHex(modulus.data(), modulus.size(), digits, digits.size());
    if (const std::string problem = Zelmarik::PublicModulusProblem(modulus.data());
        !problem.empty()) {
        FailWith(kCommand,
                 path + ": not a usable public key: " + problem +
                     "; ask the recipient for the .pubkey file that dcf keygen made",
                 kExitBadKey);
    }
    request.securityKey.SetPublicKeyText(digits);
    request.sealForKey = true;
}

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
    static constexpr ReplaceChoice kChoices[] = {{"yes", OVERWRITE_REPLACE},
                                                 {"no", OVERWRITE_SKIP},
                                                 {"rename the new one", OVERWRITE_NUMBERED},
                                                 {"quit", OVERWRITE_CANCEL}};
    const ReplaceChoice* choice = AskReplaceOnTerminal(*path, kChoices);
    answer.given = choice != nullptr ? choice->answer : OVERWRITE_CANCEL;
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
    } else if (platform::IsInteractiveTerminal()) {
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

void RunCreate(const CreateOptions& options) {
    ArchiveWriteRequest request;
    request.replaceWhenComplete = true;  // nothing is lost to a failure or an interrupt
    SourceListing listing = ListSources(kCommand, options.paths, options.quiet);
    if (!options.categories.empty()) {
        ApplyCategoryManifest(kCommand, options.categories, listing);
    }
    if (!options.recipient.empty()) {
        LoadRecipient(options.recipient, request);
    }
    LoadPassword(options, request);
    request.rootPath = listing.rootPath;
    request.items = std::move(listing.items);
    const fs::path archive = fs::absolute(fs::path(PathFromArgument(options.archive)));
    request.archiveFolder = archive.parent_path().u16string();
    request.archiveName = archive.filename().u16string();
    if (!platform::IsDirectory(request.archiveFolder)) {
        FailWith(kCommand, options.archive + ": its folder does not exist", kExitIo);
    }

    std::unique_ptr<DCCFileFormat> format;
    ChosenStub stub;
    if (options.sfx) {
        stub = ChooseStub(kCommand, options.stub, options.stubFor);
        format = std::make_unique<DCCFileFormatSFX>(stub.path, stub.windows ? u".exe" : u"");
    } else {
        format = std::make_unique<DCCFileFormatDCF>();
    }

    ArchiveRun run(!options.quiet);
    run.report.totalSize = listing.totalSize;
    ArchiveExistsAnswer answer;
    SetOverwrite(options.overwrite, answer, run.settings);
    const FormatResult result = format->WriteArchive(&request, &run.settings);
    run.EndProgress();
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
                  << Counted(listing.folders, "folder") << ", " << listing.totalSize << " bytes\n";
    }
}

}  // namespace

void AddCreateCommand(CLI::App& app) {
    auto options = std::make_shared<CreateOptions>();
    CLI::App* command = app.add_subcommand(
        "create", "Create an archive (plain .dcf or self-extracting) of files and folders");
    command->footer(
        "Names in the archive begin at the folder that holds the PATHs: 'dcf create a.dcf "
        "data/reports' stores reports/2021/a.txt. All PATHs must lie in one folder. Without a "
        "password option the password is asked twice on the terminal.");
    command
        ->add_option("ARCHIVE", options->archive,
                     "The new archive; .dcf (or .exe with a Windows stub) is added when missing")
        ->required();
    command->add_option("PATH", options->paths, "Files and folders to store")->required();
    auto* file = command->add_option("--password-file", options->passwordFile,
                                     "Read the password from the first line of a UTF-8 file");
    auto* input = command->add_flag("--password-stdin", options->passwordStdin,
                                    "Read the password from the first line of standard input");
    auto* none = command->add_flag("--no-password", options->noPassword,
                                   "No password: only the recipient's private key opens it");
    file->excludes(input)->excludes(none);
    input->excludes(none);
    command->add_option("--recipient", options->recipient,
                        "Seal the archive also for this public key (PREFIX.pubkey of keygen)");
    auto* sfx = command->add_flag("--sfx", options->sfx, "Make a self-extracting program");
    std::vector<std::string> platforms;
    std::string platformHelp = "Where the recipient runs the self-extracting file:";
    for (const StubPlatform& platform : kStubPlatforms) {
        platforms.emplace_back(platform.name);
        platformHelp += "\n  " + platforms.back() + ": " + std::string(platform.recipient);
    }
    auto* platform = command->add_option("--stub-for", options->stubFor, platformHelp)
                         ->check(CLI::IsMember(platforms))
                         ->capture_default_str()
                         ->needs(sfx);
    command
        ->add_option("--stub", options->stub, "The stub program of --sfx, instead of a shipped one")
        ->excludes(platform)
        ->needs(sfx);
    command->add_option("--categories", options->categories,
                        "JSON manifest: {\"dir/file\": [{\"id\": \"<guid>\", \"name\": ...}]}");
    command
        ->add_option("--overwrite", options->overwrite,
                     "When the archive exists: replace, skip, numbered, ask or cancel")
        ->check(CLI::IsMember({"replace", "skip", "numbered", "ask", "cancel"}))
        ->capture_default_str();
    command->add_flag("-q,--quiet", options->quiet, "No progress, no notes and no summary");
    command->callback([options] { RunCreate(*options); });
}

}  // namespace dcf
