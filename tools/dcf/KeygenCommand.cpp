// dcf keygen: a new RSA key pair as PREFIX.privkey and PREFIX.pubkey.
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "crypto/KeyGeneration.h"
#include "platform/File.h"
#include "platform/Text.h"
#include "tools/dcf/Commands.h"
#include "tools/dcf/ToolOutput.h"

namespace dcftool {

namespace {

struct KeygenOptions {
    std::string name;
    std::string prefix;
    int validityYears = -1;
    bool force = false;
};

void RunKeygen(const KeygenOptions& options) {
    const std::string privatePath = options.prefix + ".privkey";
    const std::string publicPath = options.prefix + ".pubkey";
    if (!options.force) {
        for (const std::string& path : {privatePath, publicPath}) {
            if (platform::PathExists(PathFromArgument(path))) {
                Fail("keygen", path + " exists; use --force to replace it");
            }
        }
    }
    const std::filesystem::path folder =
        std::filesystem::path(PathFromArgument(privatePath)).parent_path();
    if (!folder.empty() && !platform::IsDirectory(folder.u16string())) {
        FailWith("keygen", options.prefix + ": its folder does not exist", kExitIo);
    }
    std::cerr << "Generating a 4096-bit RSA key pair...\n";
    Zelmarik::GeneratedKeyPair pair;
    switch (Zelmarik::GenerateKeyPair(platform::Utf8ToUtf16(options.name), options.validityYears,
                                      pair)) {
        case Zelmarik::KeyGenerationResult::Ok:
            break;
        case Zelmarik::KeyGenerationResult::BadName:
            Fail("keygen", "the name must be one line of text");
        case Zelmarik::KeyGenerationResult::NoRandom:
            Fail("keygen", "the system's random generator failed");
    }
    const platform::ErrorCode error = Zelmarik::WriteKeyPairFiles(
        pair, PathFromArgument(privatePath), PathFromArgument(publicPath), options.force);
    if (error != platform::kErrorSuccess) {
        FailWith("keygen", "cannot write " + options.prefix + ".*: " + DescribeError(error),
                 kExitIo);
    }
    std::cout << "Private key: " << privatePath << " (keep it secret)\n"
              << "Public key:  " << publicPath << '\n';
}

}  // namespace

void AddKeygenCommand(CLI::App& app) {
    auto options = std::make_shared<KeygenOptions>();
    CLI::App* command = app.add_subcommand(
        "keygen", "Generate a 4096-bit RSA key pair: PREFIX.privkey and PREFIX.pubkey");
    command->footer(
        "PREFIX.privkey is the private key file that opens archives sealed for the key: keep it "
        "secret (it is created readable by its owner only). PREFIX.pubkey is the public key text "
        "that archives are sealed with. Existing files are kept unless --force is given.");
    command->add_option("--name", options->name, "Name of the key, stored in the private key file")
        ->required();
    command->add_option("--out", options->prefix, "Path and file name prefix of the two key files")
        ->required();
    command
        ->add_option("--validity", options->validityYears,
                     "Years of validity recorded in the key; -1 for no end")
        ->check(CLI::Range(-1, 1000))
        ->capture_default_str();
    command->add_flag("--force", options->force, "Replace key files that exist");
    command->callback([options] { RunKeygen(*options); });
}

}  // namespace dcftool
