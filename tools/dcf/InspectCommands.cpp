// dcf list and dcf test: walk an archive with its key, decrypting and decompressing every
// entry, and write nothing.
#include <iostream>
#include <memory>
#include <string>

#include "archive/DcfReader.h"
#include "platform/Text.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ArchiveRun.h"
#include "tools/dcf/ArchiveSource.h"
#include "tools/dcf/Commands.h"
#include "tools/dcf/JsonText.h"
#include "tools/dcf/ToolOutput.h"

namespace dcf {

namespace {

struct InspectOptions {
    std::string archive;
    KeyOptions keys;
    bool json = false;
    bool quiet = false;
};

// Walks the archive; ends the command at the first damage, after `partial` has seen what was
// read up to there.
template <typename Partial>
void Inspect(const std::string& command, const InspectOptions& options, ArchiveRun& run,
             Partial partial) {
    ImageSource source = OpenImage(command, options.archive);
    ArchiveExtractRequest request;
    request.sourcePath = PathFromArgument(options.archive);
    LoadKeys(command, options.archive, options.keys, request);
    const FormatResult result =
        InspectArchiveBody(source.stream, request, run.settings, run.report);
    run.EndProgress();
    partial(source);
    if (result == FORMAT_FAILED) {
        FailWithResult(command, options.archive + " (" + run.WhereItStopped() + ")", result);
    }
    if (result != FORMAT_OK) {
        FailWithResult(command, options.archive, result);
    }
    if (run.report.headerRead && !run.report.namesRead) {
        FailWith(command, options.archive + ": damaged: the name block is cut short", kExitDamaged);
    }
}

void PrintJson(const ImageSource& source, const ArchiveReport& report) {
    std::cout << "{\"selfExtracting\": " << (source.selfExtracting ? "true" : "false")
              << ", \"formatVersion\": " << static_cast<int>(report.formatVersion)
              << ", \"suite\": " << report.suiteId << ", \"totalSize\": " << report.totalSize
              << ",\n \"folders\": [";
    for (std::size_t i = 0; i < report.folders.size(); ++i) {
        std::cout << (i ? ", " : "") << JsonString(DisplayName(report.folders[i]));
    }
    std::cout << "],\n \"files\": [";
    for (std::size_t i = 0; i < report.entries.size(); ++i) {
        const ArchiveEntryInfo& entry = report.entries[i];
        std::cout << (i ? ",\n  " : "\n  ") << "{\"name\": " << JsonString(DisplayName(entry.name))
                  << ", \"size\": " << entry.size << ", \"categories\": [";
        bool first = true;
        for (const auto& category : entry.categories.Categories) {
            std::cout << (first ? "" : ", ")
                      << JsonString(platform::Utf16ToUtf8(category.Id.DebugLog()));
            first = false;
        }
        std::cout << "]}";
    }
    std::cout << "]}\n";
}

void PrintList(const ArchiveReport& report) {
    for (const auto& folder : report.folders) {
        std::cout << "            " << Printable(DisplayName(folder)) << "/\n";
    }
    for (const auto& entry : report.entries) {
        std::cout << std::string(11 - std::min<std::size_t>(11, std::to_string(entry.size).size()),
                                 ' ')
                  << entry.size << ' ' << Printable(DisplayName(entry.name))
                  << (entry.categories.Categories.empty()
                          ? ""
                          : "  [" + std::to_string(entry.categories.Categories.size()) +
                                " categories]")
                  << '\n';
    }
}

void RunList(const InspectOptions& options) {
    ArchiveRun run(false);
    Inspect("list", options, run, [&](const ImageSource& source) {
        if (options.json) {
            PrintJson(source, run.report);
        } else {
            PrintList(run.report);
        }
    });
}

void RunTest(const InspectOptions& options) {
    ArchiveRun run(!options.quiet);
    Inspect("test", options, run, [](const ImageSource&) {});
    if (!options.quiet) {
        std::cout << options.archive << ": OK, " << Counted(run.report.entries.size(), "file")
                  << ", " << Counted(run.report.folders.size(), "folder") << ", "
                  << run.report.totalSize << " bytes\n";
    }
}

CLI::App* AddInspectCommand(CLI::App& app, const char* name, const char* description,
                            const std::shared_ptr<InspectOptions>& options) {
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("ARCHIVE", options->archive, "The archive file")->required();
    AddKeyOptions(*command, options->keys);
    return command;
}

}  // namespace

void AddListCommand(CLI::App& app) {
    auto options = std::make_shared<InspectOptions>();
    CLI::App* command = AddInspectCommand(
        app, "list", "List the folders and files of an archive (needs its key)", options);
    command->add_flag("--json", options->json, "One JSON object instead of lines");
    command->callback([options] { RunList(*options); });
}

void AddTestCommand(CLI::App& app) {
    auto options = std::make_shared<InspectOptions>();
    CLI::App* command = AddInspectCommand(
        app, "test",
        "Decrypt and decompress every file of an archive, write nothing, report the first damage",
        options);
    command->add_flag("-q,--quiet", options->quiet, "No progress and no summary");
    command->callback([options] { RunTest(*options); });
}

}  // namespace dcf
