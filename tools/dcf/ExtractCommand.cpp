// dcf extract: the files of an archive under a folder.
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "archive/Archive.h"
#include "platform/File.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ArchiveRun.h"
#include "tools/dcf/ArchiveSource.h"
#include "tools/dcf/CommandLine.h"
#include "tools/dcf/Commands.h"
#include "tools/dcf/EntrySelection.h"
#include "tools/dcf/KeyInput.h"
#include "tools/dcf/ToolOutput.h"

namespace dcftool {

namespace {

const std::string kCommand = "extract";

struct ExtractOptions {
    std::string archive;
    std::vector<std::string> members;
    std::string directory = ".";
    unsigned strip = 0;
    KeyOptions keys;
    std::string overwrite = "ask";
    unsigned threads = 0;
    bool quiet = false;
};

const std::map<std::string, OverwriteMode> kOverwriteModes = {{"replace", OVERWRITE_REPLACE},
                                                              {"skip", OVERWRITE_SKIP},
                                                              {"ask", OVERWRITE_ASK},
                                                              {"cancel", OVERWRITE_CANCEL}};

// Why the last entry's file could not be made, and what to do about it.
std::string TargetFailure(const ArchiveReport& report) {
    switch (report.obstacle) {
        case TargetObstacle::SourceArchive:
            return "that is the archive being read, which is never replaced; extract into another "
                   "folder or use --overwrite skip";
        case TargetObstacle::Folder:
            return "a folder of that name is in the way; move it or use --overwrite skip";
        case TargetObstacle::NotAFile:
            return "a link or special file of that name is in the way, and only files are "
                   "replaced; remove it or use --overwrite skip";
        case TargetObstacle::None:
            break;
    }
    switch (report.targetError) {
        case platform::kErrorStoppedOnSymlink:
            return "a link stands where a folder of the archive goes, and links are never "
                   "followed; remove it or extract into another folder";
        case platform::kErrorDirectory:
            return "a file stands where a folder of the archive goes; move it or extract into "
                   "another folder";
        default:
            return DescribeError(report.targetError);
    }
}

// The target folder with the levels that the run makes; those it leaves empty go again unless
// the run is kept.
class TargetFolder {
public:
    TargetFolder(const std::string& argument, const std::u16string& path) {
        const platform::ErrorCode error = platform::MakeDirectoryLevels(path, created_);
        if (error != platform::kErrorSuccess) {
            TakeBack();
            FailWith(kCommand, argument + ": " + DescribeError(error), kExitIo);
        }
    }
    ~TargetFolder() { TakeBack(); }
    TargetFolder(const TargetFolder&) = delete;
    TargetFolder& operator=(const TargetFolder&) = delete;

    void Keep() { created_.clear(); }

private:
    void TakeBack() {
        for (const std::u16string& folder : created_) {
            platform::RemoveEmptyDirectory(folder);  // one that holds anything stays
        }
        created_.clear();
    }

    std::vector<std::u16string> created_;
};

void RunExtract(const ExtractOptions& options) {
    ArchiveImage image = OpenImage(kCommand, options.archive);
    ArchiveExtractRequest request;
    request.keepPartialFile = false;  // no file under its real name is ever incomplete
    request.sourcePath = CanonicalPath(options.archive);
    LoadKeys(kCommand, options.archive, options.keys, request);
    request.targetPath = CanonicalPath(options.directory);
    TargetFolder target(options.directory, request.targetPath);
    EntrySelection selection(options.members, options.strip);
    if (!options.members.empty() || options.strip > 0) {
        request.selectEntry = [&selection](std::u16string& name) { return selection.Choose(name); };
    }

    ArchiveRun run(!options.quiet);
    run.settings.overwriteMode = kOverwriteModes.at(options.overwrite);
    run.settings.codecWorkers = options.threads;
    if (run.settings.overwriteMode == OVERWRITE_ASK) {
        run.AskBeforeReplacing();
    }
    std::vector<std::u16string> extracted;
    const FormatResult result = image.Extract(request, run.settings, extracted, run.report);
    run.EndProgress();
    if (result == FORMAT_CANCELLED && !run.Interrupted() && run.settings.onFileExists == nullptr &&
        !run.report.entries.empty()) {
        FailWith(kCommand,
                 options.archive + ": stopped at " +
                     Printable(DisplayName(run.report.entries.back().name)) + ", which exists in " +
                     options.directory + "; choose what to do with --overwrite (replace or skip)",
                 kExitCancelled);
    }
    if (result == FORMAT_TARGET_OPEN_FAILED && !run.report.entries.empty()) {
        FailWith(kCommand,
                 options.archive + ": cannot create " + options.directory + "/" +
                     Printable(DisplayName(run.report.entries.back().name)) + ": " +
                     TargetFailure(run.report),
                 kExitIo);
    }
    run.EndOnFailure(kCommand, options.archive, result);
    target.Keep();
    for (const std::string& pattern : selection.Unmatched()) {
        Fail(kCommand, options.archive + ": nothing in the archive matches \"" + pattern + "\"");
    }
    if (!options.quiet) {
        std::cout << "Extracted " << extracted.size() << " of " << run.report.fileCount
                  << " files to " << options.directory << '\n';
    }
}

}  // namespace

void AddExtractCommand(CLI::App& app) {
    auto options = std::make_shared<ExtractOptions>();
    CLI::App* command = app.add_subcommand(
        "extract", "Extract an archive (plain .dcf or self-extracting) into a folder");
    command->footer(
        "MEMBERs select what is extracted: a name as 'dcf list' shows it, a folder with all it "
        "holds, or a pattern with * ? [..] ('reports/2021/*'; quote it for the shell).");
    command->add_option("ARCHIVE", options->archive, "The archive file")->required();
    command->add_option("MEMBER", options->members, "Names or patterns of what to extract");
    command->add_option("-C,--directory", options->directory, "Target folder, made when missing")
        ->capture_default_str();
    command
        ->add_option("--strip-components", options->strip,
                     "Leave out N leading folders of each name; shorter names are skipped")
        ->type_name("N");
    AddKeyOptions(*command, options->keys);
    command
        ->add_option("--overwrite", options->overwrite,
                     "What to do with files that exist: replace, skip, ask or cancel")
        ->check(CLI::IsMember({"replace", "skip", "ask", "cancel"}))
        ->capture_default_str();
    AddThreadsOption(*command, options->threads);
    command->add_flag("-q,--quiet", options->quiet, "No progress and no summary");
    command->callback([options] { RunExtract(*options); });
}

}  // namespace dcftool
