// dcf info: what an archive shows without its key.
#include <iostream>
#include <memory>
#include <string>

#include "Common/DataCategory/CategoryContainer.h"
#include "archive/DcfReader.h"
#include "platform/Text.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ArchiveSource.h"
#include "tools/dcf/Commands.h"
#include "tools/dcf/JsonText.h"
#include "tools/dcf/ShippedStubs.h"
#include "tools/dcf/ToolOutput.h"

namespace dcf {

namespace {

struct InfoOptions {
    std::string archive;
    bool json = false;
};

void RunInfo(const InfoOptions& options) {
    ImageSource source = OpenImage("info", options.archive);
    Zelmarik::CCategoryContainer categories;
    bool intact = false;
    if (ReadArchivePreamble(source.stream, categories, intact) != FORMAT_OK) {
        FailWith("info",
                 options.archive + ": not a DCF archive (no signature at offset " +
                     std::to_string(source.offset) + ")",
                 kExitDamaged);
    }
    // The stub is everything in front of the image; a sender checks it against the stubs shipped.
    std::string stubDigest;
    std::string shippedStub;
    if (source.selfExtracting) {
        stubDigest = FileDigest("info", options.archive, source.offset);
        shippedStub = ShippedStubWithDigest(stubDigest);
    }
    if (options.json) {
        std::cout << "{\"file\": " << JsonString(options.archive)
                  << ", \"selfExtracting\": " << (source.selfExtracting ? "true" : "false")
                  << ", \"stubSha256\": " << (stubDigest.empty() ? "null" : JsonString(stubDigest))
                  << ", \"shippedStub\": "
                  << (shippedStub.empty() ? "null" : JsonString(shippedStub))
                  << ", \"imageOffset\": " << source.offset << ", \"imageSize\": " << source.size
                  << ", \"categoriesIntact\": " << (intact ? "true" : "false")
                  << ",\n \"categories\": [";
        bool first = true;
        for (const auto& category : categories.Categories) {
            std::cout << (first ? "\n  " : ",\n  ")
                      << "{\"id\": " << JsonString(platform::Utf16ToUtf8(category.Id.DebugLog()))
                      << ", \"name\": " << JsonString(platform::Utf16ToUtf8(category.Name)) << "}";
            first = false;
        }
        std::cout << "]}\n";
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
