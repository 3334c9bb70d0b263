#include "tools/dcf/ArchiveSource.h"

#include <filesystem>
#include <iostream>

#include "archive/SfxImage.h"
#include "archive/SfxTrailer.h"
#include "platform/Terminal.h"
#include "platform/Text.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ToolOutput.h"

namespace dcf {

namespace {

// The first line of `text`, without its line end.
std::string_view FirstLine(std::string_view text) {
    text = text.substr(0, text.find('\n'));
    if (!text.empty() && text.back() == '\r') {
        text.remove_suffix(1);
    }
    return text;
}

[[noreturn]] void FailTooLong(const std::string& command, const std::string& where) {
    FailWith(command,
             where + ": the password line is longer than " + std::to_string(kLongestPasswordLine) +
                 " bytes",
             kExitUsage);
}

}  // namespace

Zelmarik::SecureU16String ReadPasswordFile(const std::string& command, const std::string& path) {
    platform::File file;
    std::uint64_t size = 0;
    platform::ErrorCode error = file.Open(PathFromArgument(path), platform::OpenMode::Read);
    if (error == platform::kErrorSuccess) {
        error = file.Size(size);
    }
    constexpr std::uint64_t kLongestFile = 64 * 1024;  // far more than a password needs
    Zelmarik::SecureVector<char> text(static_cast<std::size_t>(std::min(size, kLongestFile)));
    std::size_t got = 0;
    if (error == platform::kErrorSuccess) {
        error = file.Read(text.data(), text.size(), got);
    }
    if (error != platform::kErrorSuccess) {
        FailWith(command, path + ": " + DescribeError(error), kExitIo);
    }
    const std::string_view line = FirstLine(std::string_view(text.data(), got));
    if (line.size() > kLongestPasswordLine) {
        FailTooLong(command, path);
    }
    return Zelmarik::SecureUtf16FromUtf8(line);
}

std::optional<Zelmarik::SecureU16String> ReadPasswordLine(const std::string& command,
                                                          const std::string& prompt) {
    if (!prompt.empty()) {
        std::cerr << prompt << std::flush;
    }
    Zelmarik::SecureVector<char> line(kLongestPasswordLine + 1);
    std::size_t length = 0;
    const bool read = platform::ReadSecretLine(line, length);
    if (!prompt.empty()) {
        std::cerr << '\n';
    }
    if (!read) {
        return std::nullopt;
    }
    if (length > kLongestPasswordLine) {
        FailTooLong(command, prompt.empty() ? "standard input" : "the terminal");
    }
    return Zelmarik::SecureUtf16FromUtf8(std::string_view(line.data(), length));
}

ImageSource OpenImage(const std::string& command, const std::string& path) {
    const std::u16string native = PathFromArgument(path);
    ImageSource source;
    const platform::ErrorCode error = source.stream.Open(native, platform::OpenMode::Read);
    if (error != platform::kErrorSuccess) {
        FailWith(command, path + ": " + DescribeError(error), kExitIo);
    }
    SfxTrailerBytes trailer{};
    if (ReadSfxTrailer(source.stream, trailer) && HasSfxSignature(trailer)) {
        const FormatResult located = OpenSfxImage(native, source.stream);
        if (located != FORMAT_OK) {
            FailWithResult(command, path, located);
        }
        source.selfExtracting = true;
        source.size = SfxImageSize(trailer);
        source.stream.Tell(source.offset);
        return source;
    }
    if (source.stream.Size(source.size) != platform::kErrorSuccess ||
        source.stream.Seek(0) != platform::kErrorSuccess) {
        FailWith(command, path + ": cannot be read", kExitIo);
    }
    return source;
}

std::u16string CanonicalPath(const std::string& argument) {
    std::error_code error;
    const std::filesystem::path canonical =
        std::filesystem::weakly_canonical(std::filesystem::path(PathFromArgument(argument)), error);
    return error ? PathFromArgument(argument) : canonical.u16string();
}

void AddKeyOptions(CLI::App& command, KeyOptions& options) {
    auto* file = command.add_option("--password-file", options.passwordFile,
                                    "Read the password from the first line of a UTF-8 file");
    auto* input = command.add_flag("--password-stdin", options.passwordStdin,
                                   "Read the password from the first line of standard input");
    auto* key = command.add_option("--key", options.keyFile,
                                   "Open the archive with a private key file (*.privkey)");
    file->excludes(input)->excludes(key);
    input->excludes(key);
}

void LoadKeys(const std::string& command, const std::string& archive, const KeyOptions& options,
              ArchiveExtractRequest& request) {
    if (!options.keyFile.empty()) {
        const std::uint32_t error =
            request.securityKey.PrivateFromFile(PathFromArgument(options.keyFile).c_str());
        if (error != 0) {
            FailWith(command,
                     options.keyFile + ": not a readable private key: " + DescribeError(error),
                     error == platform::kErrorInvalidData ? kExitBadKey : kExitIo);
        }
        request.keyGiven = true;
        return;
    }
    if (!options.passwordFile.empty()) {
        request.password = ReadPasswordFile(command, options.passwordFile);
    } else if (options.passwordStdin || platform::IsInteractiveTerminal()) {
        std::optional<Zelmarik::SecureU16String> line = ReadPasswordLine(
            command, options.passwordStdin ? "" : "Password for " + archive + ": ");
        if (!line) {
            FailWith(command, "no password entered", kExitCancelled);
        }
        request.password = std::move(*line);
    } else {
        FailWith(command, "give --password-file, --password-stdin or --key", kExitUsage);
    }
    request.passwordGiven = true;
}

}  // namespace dcf
