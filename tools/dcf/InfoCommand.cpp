// dcf info: what an archive shows without its key.
#include <iostream>
#include <memory>
#include <string>

#include "Common/DataCategory/CategoryContainer.h"
#include "archive/Archive.h"
#include "platform/Text.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ArchiveSource.h"
#include "tools/dcf/Commands.h"
#include "tools/dcf/JsonText.h"
#include "tools/dcf/SealDescription.h"
#include "tools/dcf/ShippedStubs.h"
#include "tools/dcf/ToolOutput.h"

namespace dcftool {

namespace {

const std::string kCommand = "info";

struct InfoOptions {
    std::string archive;
    bool json = false;
};

// Why the preamble could not be read: no image at all, or one whose preamble is damaged.
[[noreturn]] void FailOnPreamble(const std::string& archive, ArchiveImage& image) {
    FailWith(kCommand,
             archive + (image.HasSignature()
                            ? ": damaged: the category preamble runs past the end of the file"
                            : ": not a DCF archive (no signature at offset " +
                                  std::to_string(image.Offset()) + ")"),
             kExitDamaged);
}

void PrintJson(const InfoOptions& options, const ArchiveImage& image,
               const Zelmarik::CCategoryContainer& categories, bool intact,
               const std::string& stubDigest, const std::string& shippedStub) {
    std::cout << "{\"file\": " << JsonString(options.archive)
              << ", \"selfExtracting\": " << (image.SelfExtracting() ? "true" : "false")
              << ", \"stubSha256\": " << (stubDigest.empty() ? "null" : JsonString(stubDigest))
              << ", \"shippedStub\": " << (shippedStub.empty() ? "null" : JsonString(shippedStub))
              << ", \"imageOffset\": " << image.Offset() << ", \"imageSize\": " << image.Size()
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
    ArchiveImage image = OpenImage(kCommand, options.archive);
    Zelmarik::CCategoryContainer categories;
    bool intact = false;
    if (image.ReadPreamble(categories, intact) != FORMAT_OK) {
        FailOnPreamble(options.archive, image);
    }
    // The stub is everything in front of the image; a sender checks it against the stubs shipped.
    std::string stubDigest;
    std::string shippedStub;
    if (image.SelfExtracting()) {
        stubDigest = FileDigest("info", options.archive, image.Offset());
        shippedStub = ShippedStubWithDigest(stubDigest);
    }
    if (options.json) {
        PrintJson(options, image, categories, intact, stubDigest, shippedStub);
        return;
    }
    std::cout << "File:          " << options.archive << '\n'
              << "Form:          "
              << (image.SelfExtracting() ? "self-extracting (image found through its trailer)"
                                         : "plain DCF image")
              << '\n';
    if (image.SelfExtracting()) {
        std::cout << "Stub SHA-256:  " << stubDigest << '\n'
                  << "Stub:          "
                  << (shippedStub.empty() ? "not one of the stubs shipped with this dcf"
                                          : "the " + shippedStub + " stub shipped with this dcf")
                  << '\n';
    }
    std::cout << "Image offset:  " << image.Offset() << '\n'
              << "Image size:    " << image.Size() << " bytes\n"
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

}  // namespace dcftool
