// dcf list and dcf test: walk an archive with its key, decrypting and decompressing every
// entry, and write nothing.
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "archive/Archive.h"
#include "platform/Text.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ArchiveRun.h"
#include "tools/dcf/ArchiveSource.h"
#include "tools/dcf/CommandLine.h"
#include "tools/dcf/Commands.h"
#include "tools/dcf/EntrySelection.h"
#include "tools/dcf/JsonText.h"
#include "tools/dcf/KeyInput.h"
#include "tools/dcf/SealDescription.h"
#include "tools/dcf/ToolOutput.h"

namespace dcftool {

namespace {

struct InspectOptions {
    std::string archive;
    std::vector<std::string> members;
    KeyOptions keys;
    bool json = false;
    bool longForm = false;
    unsigned threads = 0;  // dcf test only
    bool quiet = false;
};

// What a walk found, narrowed to the entries that the MEMBERs select.
struct Inspection {
    ArchiveImage image;
    ArchiveRun run;
    std::vector<const ArchiveEntryInfo*> entries;
    std::vector<const std::u16string*> folders;

    explicit Inspection(bool showProgress) : run(showProgress) {}
};

// Walks the archive; ends the command at the first damage, or when a MEMBER selects nothing.
void Inspect(const std::string& command, const InspectOptions& options, Inspection& inspection) {
    inspection.image = OpenImage(command, options.archive);
    ArchiveExtractRequest request;
    request.sourcePath = PathFromArgument(options.archive);
    LoadKeys(command, options.archive, options.keys, request);
    ArchiveRun& run = inspection.run;
    run.settings.codecWorkers = options.threads;
    const FormatResult result = inspection.image.Inspect(request, run.settings, run.report);
    run.EndProgress();
    run.EndOnFailure(command, options.archive, result);
    EntrySelection selection(options.members, 0);
    for (const std::u16string& folder : run.report.folders) {
        if (selection.Selects(platform::Utf8ToUtf16(DisplayName(folder)))) {
            inspection.folders.push_back(&folder);
        }
    }
    for (const ArchiveEntryInfo& entry : run.report.entries) {
        if (selection.Selects(platform::Utf8ToUtf16(DisplayName(entry.name)))) {
            inspection.entries.push_back(&entry);
        }
    }
    for (const std::string& pattern : selection.Unmatched()) {
        Fail(command, options.archive + ": nothing in the archive matches \"" + pattern + "\"");
    }
}

// A category by its name, or by its identifier when it has none.
std::string CategoryLabel(const Zelmarik::CDlpCategory& category) {
    return platform::Utf16ToUtf8(category.Name.empty() ? category.Id.DebugLog() : category.Name);
}

void PrintJson(const Inspection& inspection) {
    const ArchiveReport& report = inspection.run.report;
    std::cout << "{\"selfExtracting\": " << (inspection.image.SelfExtracting() ? "true" : "false")
              << ", \"formatVersion\": " << static_cast<int>(report.formatVersion)
              << ", \"suite\": " << report.suiteId
              << ", \"suiteName\": " << JsonString(SuiteInWords(report.suiteId))
              << ", \"totalSize\": " << report.totalSize << ",\n \"folders\": [";
    for (std::size_t i = 0; i < inspection.folders.size(); ++i) {
        std::cout << (i ? ", " : "") << JsonString(DisplayName(*inspection.folders[i]));
    }
    std::cout << "],\n \"files\": [";
    for (std::size_t i = 0; i < inspection.entries.size(); ++i) {
        const ArchiveEntryInfo& entry = *inspection.entries[i];
        std::cout << (i ? ",\n  " : "\n  ") << "{\"name\": " << JsonString(DisplayName(entry.name))
                  << ", \"size\": " << entry.size << ", \"packedSize\": " << entry.packedSize
                  << ", \"categories\": [";
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

std::string CategoriesNote(const ArchiveEntryInfo& entry) {
    const std::size_t count = entry.categories.Categories.size();
    return count == 0 ? "" : "  [" + Counted(count, "category").substr(0) + "]";
}

void PrintShort(const Inspection& inspection) {
    for (const std::u16string* folder : inspection.folders) {
        std::cout << std::setw(12) << "" << Printable(DisplayName(*folder)) << "/\n";
    }
    for (const ArchiveEntryInfo* entry : inspection.entries) {
        std::cout << std::setw(11) << entry->size << ' ' << Printable(DisplayName(entry->name))
                  << CategoriesNote(*entry) << '\n';
    }
}

void PrintLong(const Inspection& inspection) {
    std::cout << std::setw(14) << "Size" << std::setw(14) << "Packed"
              << "  Name\n";
    for (const std::u16string* folder : inspection.folders) {
        std::cout << std::setw(28) << ""
                  << "  " << Printable(DisplayName(*folder)) << "/\n";
    }
    std::uint64_t size = 0;
    std::uint64_t packed = 0;
    for (const ArchiveEntryInfo* entry : inspection.entries) {
        std::string categories;
        for (const auto& category : entry->categories.Categories) {
            categories += (categories.empty() ? "  [" : ", ") + CategoryLabel(category);
        }
        std::cout << std::setw(14) << entry->size << std::setw(14) << entry->packedSize << "  "
                  << Printable(DisplayName(entry->name)) << categories
                  << (categories.empty() ? "" : "]") << '\n';
        size += entry->size;
        packed += entry->packedSize;
    }
    std::cout << std::setw(14) << size << std::setw(14) << packed << "  "
              << Counted(inspection.entries.size(), "file") << ", "
              << Counted(inspection.folders.size(), "folder") << '\n';
}

void RunList(const InspectOptions& options) {
    Inspection inspection(true);
    Inspect("list", options, inspection);
    if (options.json) {
        PrintJson(inspection);
    } else if (options.longForm) {
        PrintLong(inspection);
    } else {
        PrintShort(inspection);
    }
}

void RunTest(const InspectOptions& options) {
    Inspection inspection(!options.quiet);
    Inspect("test", options, inspection);
    if (options.quiet) {
        return;
    }
    std::uint64_t bytes = 0;
    for (const ArchiveEntryInfo* entry : inspection.entries) {
        bytes += entry->size;
    }
    std::cout << options.archive << ": OK, " << Counted(inspection.entries.size(), "file") << ", "
              << Counted(inspection.folders.size(), "folder") << ", " << bytes << " bytes\n"
              << "Cipher: " << SuiteInWords(inspection.run.report.suiteId) << " (suite "
              << inspection.run.report.suiteId << "); opened by "
              << (options.keys.keyFile.empty() ? "the password" : "the private key") << '\n';
}

CLI::App* AddInspectCommand(CLI::App& app, const char* name, const char* description,
                            const std::shared_ptr<InspectOptions>& options) {
    CLI::App* command = app.add_subcommand(name, description);
    command->footer(
        "MEMBERs select entries: a name as 'dcf list' shows it, a folder with all it holds, or a "
        "pattern with * ? [..] ('reports/2021/*'; quote it for the shell).");
    command->add_option("ARCHIVE", options->archive, "The archive file")->required();
    command->add_option("MEMBER", options->members, "Names or patterns of the entries to take (all when none)");
    AddKeyOptions(*command, options->keys);
    return command;
}

}  // namespace

void AddListCommand(CLI::App& app) {
    auto options = std::make_shared<InspectOptions>();
    CLI::App* command = AddInspectCommand(
        app, "list", "List the folders and files of an archive (needs its key)", options);
    auto* json = command->add_flag("--json", options->json, "One JSON object instead of lines");
    command
        ->add_flag("-l,--long", options->longForm,
                   "Size, packed size and categories by name, with a totals line")
        ->excludes(json);
    command->callback([options] { RunList(*options); });
}

void AddTestCommand(CLI::App& app) {
    auto options = std::make_shared<InspectOptions>();
    CLI::App* command = AddInspectCommand(
        app, "test",
        "Decrypt and decompress every file of an archive, write nothing, report the first damage",
        options);
    AddThreadsOption(*command, options->threads);
    command->add_flag("-q,--quiet", options->quiet, "No progress and no summary");
    command->callback([options] { RunTest(*options); });
}

}  // namespace dcftool
