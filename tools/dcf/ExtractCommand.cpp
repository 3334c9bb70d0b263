// dcf extract: the files of an archive under a folder.
#include <iostream>
#include <map>
#include <memory>
#include <string>

#include "archive/DcfReader.h"
#include "platform/File.h"
#include "platform/Text.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ArchiveRun.h"
#include "tools/dcf/ArchiveSource.h"
#include "tools/dcf/Commands.h"
#include "tools/dcf/ToolOutput.h"

namespace dcf {

namespace {

struct ExtractOptions {
    std::string archive;
    std::string directory = ".";
    KeyOptions keys;
    std::string overwrite = "ask";
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
    return DescribeError(report.targetError);
}

void RunExtract(const ExtractOptions& options) {
    const std::string command = "extract";
    ImageSource source = OpenImage(command, options.archive);
    ArchiveExtractRequest request;
    request.keepPartialFile = false;  // no file under its real name is ever incomplete
    request.sourcePath = CanonicalPath(options.archive);
    request.targetPath = CanonicalPath(options.directory);
    if (!platform::IsDirectory(request.targetPath)) {
        const platform::ErrorCode error = platform::MakeDirectory(request.targetPath);
        if (error != platform::kErrorSuccess) {
            FailWith(command, options.directory + ": " + DescribeError(error), kExitIo);
        }
    }
    LoadKeys(command, options.archive, options.keys, request);

    ArchiveRun run(!options.quiet);
    run.settings.overwriteMode = kOverwriteModes.at(options.overwrite);
    if (run.settings.overwriteMode == OVERWRITE_ASK) {
        run.AskBeforeReplacing();
    }
    std::vector<std::u16string> extracted;
    const FormatResult result =
        ReadArchiveBody(source.stream, request, run.settings, extracted, nullptr, run.report);
    run.EndProgress();
    if (result == FORMAT_CANCELLED && run.settings.onFileExists == nullptr &&
        run.settings.overwriteMode != OVERWRITE_REPLACE) {
        FailWith(command,
                 options.archive + ": stopped at a file that exists " + run.WhereItStopped() +
                     "; choose what to do with --overwrite",
                 kExitCancelled);
    }
    if (result == FORMAT_TARGET_OPEN_FAILED && !run.report.entries.empty()) {
        FailWith(command,
                 options.archive + ": cannot create " + options.directory + "/" +
                     Printable(DisplayName(run.report.entries.back().name)) + ": " +
                     TargetFailure(run.report),
                 kExitIo);
    }
    if (result == FORMAT_FAILED || result == FORMAT_TARGET_OPEN_FAILED ||
        result == FORMAT_OUTPUT_WRITE_FAILED) {
        FailWithResult(command, options.archive + " (" + run.WhereItStopped() + ")", result);
    }
    if (result != FORMAT_OK) {
        FailWithResult(command, options.archive, result);
    }
    if (run.report.headerRead && !run.report.namesRead) {
        FailWith(command, options.archive + ": damaged: the name block is cut short", kExitDamaged);
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
    command->add_option("ARCHIVE", options->archive, "The archive file")->required();
    command->add_option("-C,--directory", options->directory, "Target folder")
        ->capture_default_str();
    AddKeyOptions(*command, options->keys);
    command
        ->add_option("--overwrite", options->overwrite,
                     "What to do with files that exist: replace, skip, ask or cancel")
        ->check(CLI::IsMember({"replace", "skip", "ask", "cancel"}))
        ->capture_default_str();
    command->add_flag("-q,--quiet", options->quiet, "No progress and no summary");
    command->callback([options] { RunExtract(*options); });
}

}  // namespace dcf
