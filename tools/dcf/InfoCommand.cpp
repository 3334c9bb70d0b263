// dcf info: what an archive shows without its key.
#include <array>
#include <iostream>
#include <memory>
#include <string>

#include "Common/DataCategory/CategoryContainer.h"
#include "archive/detail/DcfReader.h"
#include "archive/detail/DcfRecords.h"
#include "platform/Text.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ArchiveSource.h"
#include "tools/dcf/Commands.h"
#include "tools/dcf/JsonText.h"
#include "tools/dcf/SealDescription.h"
#include "tools/dcf/ShippedStubs.h"
#include "tools/dcf/ToolOutput.h"

namespace dcf {

namespace {

const std::string kCommand = "info";

struct InfoOptions {
    std::string archive;
    bool json = false;
};

// Why the preamble could not be read: no image at all, or one whose preamble is damaged.
[[noreturn]] void FailOnPreamble(const std::string& archive, ImageSource& source) {
    std::array<std::uint8_t, dcf::kSignatureSize> head{};
    std::size_t got = 0;
    const bool signature =
        source.stream.Seek(source.offset) == platform::kErrorSuccess &&
        source.stream.Read(head.data(), head.size(), got) == platform::kErrorSuccess &&
        got == head.size() && dcf::HasSignature(head);
    FailWith(kCommand,
             archive + (signature ? ": damaged: the category preamble runs past the end of the file"
                                  : ": not a DCF archive (no signature at offset " +
                                        std::to_string(source.offset) + ")"),
             kExitDamaged);
}

void PrintJson(const InfoOptions& options, const ImageSource& source,
               const Zelmarik::CCategoryContainer& categories, bool intact,
               const std::string& stubDigest, const std::string& shippedStub) {
    std::cout << "{\"file\": " << JsonString(options.archive)
              << ", \"selfExtracting\": " << (source.selfExtracting ? "true" : "false")
              << ", \"stubSha256\": " << (stubDigest.empty() ? "null" : JsonString(stubDigest))
              << ", \"shippedStub\": " << (shippedStub.empty() ? "null" : JsonString(shippedStub))
              << ", \"imageOffset\": " << source.offset << ", \"imageSize\": " << source.size
              << ", \"keyBlock\": " << JsonString(KeyBlockInWords())
              << ", \"categoriesIntact\": " << (intact ? "true" : "false")
              << ",\n \"categories\": [";
    bool first = true;
    for (const auto& category : categories.Categories) {
        std::cout << (first ? "\n  " : ",\n  ")
                  << "{\"id\": " << JsonString(platform::Utf16ToUtf8(category.Id.DebugLog()))
                  << ", \"name\": " << JsonString(platform::Utf16ToUtf8(category.Name))
                  << ", \"kind\": " << category.Kind << ", \"kindName\": "
                  << JsonString(
                         platform::Utf16ToUtf8(Zelmarik::CDlpCategory::KindText(category.Kind)))
                  << ", \"hasPriority\": " << (category.Flags.HasPriority ? "true" : "false")
                  << ", \"priority\": " << category.Priority
                  << ", \"unified\": " << (category.Flags.Unified ? "true" : "false")
                  << ", \"allData\": " << (category.Flags.AllData ? "true" : "false") << "}";
        first = false;
    }
    std::cout << "]}\n";
}

void RunInfo(const InfoOptions& options) {
    ImageSource source = OpenImage(kCommand, options.archive);
    Zelmarik::CCategoryContainer categories;
    bool intact = false;
    if (ReadArchivePreamble(source.stream, categories, intact) != FORMAT_OK) {
        FailOnPreamble(options.archive, source);
    }
    // The stub is everything in front of the image; a sender checks it against the stubs shipped.
    std::string stubDigest;
    std::string shippedStub;
    if (source.selfExtracting) {
        stubDigest = FileDigest("info", options.archive, source.offset);
        shippedStub = ShippedStubWithDigest(stubDigest);
    }
    if (options.json) {
        PrintJson(options, source, categories, intact, stubDigest, shippedStub);
        return;
    }
    std::cout << "File:          " << options.archive << '\n'
              << "Form:          "
              << (source.selfExtracting ? "self-extracting (image found through its trailer)"
                                        : "plain DCF image")
              << '\n';
    if (source.selfExtracting) {
        std::cout << "Stub SHA-256:  " << stubDigest << '\n'
                  << "Stub:          "
                  << (shippedStub.empty() ? "not one of the stubs shipped with this dcf"
                                          : "the " + shippedStub + " stub shipped with this dcf")
                  << '\n';
    }
    std::cout << "Image offset:  " << source.offset << '\n'
              << "Image size:    " << source.size << " bytes\n"
              << "Key block:     " << KeyBlockInWords() << '\n'
              << "Categories:    ";
    if (!intact) {
        std::cout << "(the category block is damaged)\n";
        return;
    }
    std::cout << categories.Categories.size() << '\n';
    for (const auto& category : categories.Categories) {
        std::cout << "  " << Printable(platform::Utf16ToUtf8(category.DebugLog())) << '\n';
    }
}

}  // namespace

void AddInfoCommand(CLI::App& app) {
    auto options = std::make_shared<InfoOptions>();
    CLI::App* command = app.add_subcommand(
        "info", "Show the form of an archive and its clear-text categories (no key needed)");
    command->add_option("ARCHIVE", options->archive, "The archive file")->required();
    command->add_flag("--json", options->json, "One JSON object instead of lines");
    command->callback([options] { RunInfo(*options); });
}

}  // namespace dcf
