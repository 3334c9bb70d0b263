#include "tools/dcf/KeyInput.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <iostream>
#include <optional>
#include <string_view>

#include "Common/Common/SecureBuffer.h"
#include "archive/Archive.h"
#include "crypto/Rsa.h"
#include "frontend/terminal/TerminalUi.h"
#include "platform/File.h"
#include "platform/Terminal.h"
#include "platform/Text.h"
#include "tools/dcf/PasswordAdvice.h"
#include "tools/dcf/ToolOutput.h"

namespace dcftool {

namespace {

using Zelmarik::SecureU16String;
using Zelmarik::SecureVector;

// Far more than a password needs; a longer first line is refused as too long anyway.
constexpr std::size_t kLongestLine = 64 * 1024;

// The first line of `text` as UTF-16, without its line end and a UTF-8 byte order mark.
SecureU16String FirstLine(const std::string& command, const std::string& source,
                          std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) {
        text.remove_prefix(3);
    }
    text = text.substr(0, text.find('\n'));
    if (text.ends_with('\r')) {
        text.remove_suffix(1);
    }
    if (!platform::IsWellFormedUtf8(text)) {
        FailWith(command, source + ": the password is not UTF-8", kExitUsage);
    }
    std::u16string converted = platform::Utf8ToUtf16(text);
    SecureU16String password(converted);
    platform::SecureWipe(converted.data(), converted.capacity() * sizeof(char16_t));
    return password;
}

SecureU16String ReadPasswordFile(const std::string& command, const std::string& path) {
    platform::File file;
    std::uint64_t size = 0;
    const std::u16string native = PathFromArgument(path);
    platform::ErrorCode error = file.Open(native, platform::OpenMode::Read);
    if (error == platform::kErrorSuccess) {
        error = file.Size(size);
    }
    SecureVector<char> text(static_cast<std::size_t>(std::min(size, kLongestLine)));
    std::size_t got = 0;
    if (error == platform::kErrorSuccess) {
        error = file.Read(text.data(), text.size(), got);
    }
    if (error != platform::kErrorSuccess) {
        FailWith(command, path + ": " + DescribeError(error, native), kExitIo);
    }
    return FirstLine(command, path, std::string_view(text.data(), got));
}

// Read past the C library's buffers, which would keep a copy of the line.
SecureU16String ReadPasswordInput(const std::string& command) {
    SecureVector<char> text(kLongestLine);
    const std::size_t length = platform::ReadInputSecret(text).value_or(0);
    return FirstLine(command, "standard input",
                     std::string_view(text.data(), std::min(length, text.size())));
}

// Asks on the terminal; ends the command when the input ends or Ctrl-C is pressed.
SecureU16String AskPassword(const std::string& command, const std::string& prompt) {
    platform::CatchInterrupts();  // Ctrl-C ends the question, not the program
    std::optional<SecureU16String> typed = terminal::AskSecret(prompt);
    if (!typed) {
        FailWith(command, "no password entered", kExitCancelled);
    }
    return std::move(*typed);
}

void RefuseEmpty(const std::string& command, const SecureU16String& password) {
    if (password.Empty()) {
        FailWith(command, "the password is empty; give one that is not", kExitUsage);
    }
}

// The password of the file or standard input, or else typed on the terminal (twice, and not
// empty, with `confirm`). Without a terminal the command ends, naming the options `instead`.
SecureU16String ObtainPassword(const std::string& command, const std::string& archive,
                               const std::string& file, bool fromInput, bool confirm,
                               const std::string& instead, bool& typed) {
    typed = file.empty() && !fromInput;
    if (!file.empty()) {
        return ReadPasswordFile(command, file);
    }
    if (fromInput) {
        return ReadPasswordInput(command);
    }
    if (!platform::HasTerminal()) {
        FailWith(command, "no terminal to ask for the password: give " + instead, kExitUsage);
    }
    SecureU16String password = AskPassword(command, "Password for " + archive + ": ");
    if (confirm) {
        RefuseEmpty(command, password);
        if (AskPassword(command, "Repeat the password: ").View() != password.View()) {
            FailWith(command, "the two passwords differ", kExitUsage);
        }
    }
    return password;
}

// 1024 hexadecimal digits, line ends and blanks ignored; nothing for any other text.
std::optional<std::string> PublicKeyDigits(const std::string& text) {
    std::string digits;
    for (const char c : text) {
        if (std::isxdigit(static_cast<unsigned char>(c))) {
            digits.push_back(c);
        } else if (!std::isspace(static_cast<unsigned char>(c))) {
            return std::nullopt;
        }
    }
    if (digits.size() != Zelmarik::DCCSecurityKey::kPublicKeyDigits) {
        return std::nullopt;
    }
    return digits;
}

// The start of a file, enough for a public key text; empty when it can't be read.
std::string FileStart(const std::string& path, platform::ErrorCode& error) {
    platform::File file;
    std::string text(4096, '\0');
    std::size_t got = 0;
    error = file.Open(PathFromArgument(path), platform::OpenMode::Read);
    if (error == platform::kErrorSuccess) {
        error = file.Read(text.data(), text.size(), got);
    }
    text.resize(got);
    return text;
}

}  // namespace

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
        if (error == platform::kErrorInvalidData) {
            platform::ErrorCode ignored = platform::kErrorSuccess;
            FailWith(command,
                     options.keyFile +
                         (PublicKeyDigits(FileStart(options.keyFile, ignored))
                              ? ": this is a public key; give the .privkey file of the pair"
                              : ": not a private key file (*.privkey of dcf keygen)"),
                     kExitBadKey);
        }
        if (error != 0) {
            FailWith(
                command,
                options.keyFile + ": " + DescribeError(error, PathFromArgument(options.keyFile)),
                kExitIo);
        }
        request.keyGiven = true;
        return;
    }
    bool typed = false;
    const SecureU16String password =
        ObtainPassword(command, archive, options.passwordFile, options.passwordStdin, false,
                       "--password-file, --password-stdin or --key", typed);
    RefuseEmpty(command, password);
    request.password = password;
    request.passwordGiven = true;
}

void LoadNewPassword(const std::string& command, const std::string& archive,
                     const NewPasswordOptions& options, bool recipient,
                     ArchiveWriteRequest& request) {
    if (options.noPassword) {
        if (!recipient) {
            FailWith(command, "--no-password needs --recipient: nothing could open the archive",
                     kExitUsage);
        }
        return;
    }
    bool typed = false;
    const SecureU16String password = ObtainPassword(
        command, archive, options.passwordFile, options.passwordStdin, true,
        "--password-file, --password-stdin or --no-password with --recipient", typed);
    RefuseEmpty(command, password);
    switch (FitPassword(password.View())) {
        case PasswordFit::TooLong:
            FailWith(command, "the password is longer than 64 bytes", kExitUsage);
        case PasswordFit::Empty:
            FailWith(command, "nothing of the password is left once cut to low bytes", kExitUsage);
        case PasswordFit::Fits:
            break;
    }
    if (const auto warning = CutCharactersWarning(password.View())) {
        Note(command, *warning);
    }
    if (typed) {
        if (const auto warning = WeakPasswordWarning(password.View())) {
            Note(command, *warning);
        }
    }
    request.password = password;
    request.passwordGiven = true;
}

void LoadRecipient(const std::string& command, const std::string& path,
                   ArchiveWriteRequest& request) {
    platform::ErrorCode error = platform::kErrorSuccess;
    const std::string text = FileStart(path, error);
    if (error != platform::kErrorSuccess) {
        FailWith(command, path + ": " + DescribeError(error, PathFromArgument(path)), kExitIo);
    }
    const std::optional<std::string> digits = PublicKeyDigits(text);
    if (!digits) {
        FailWith(command,
                 path +
                     ": not a public key text (1024 hexadecimal digits, the .pubkey of dcf "
                     "keygen)",
                 kExitUsage);
    }
    std::array<std::uint32_t, Zelmarik::kRsaNumberWords> modulus{};
    Zelmarik::DCRSA::NumberFromHex(modulus.data(), modulus.size(), *digits, digits->size());
    if (const std::string problem = Zelmarik::PublicModulusProblem(modulus.data());
        !problem.empty()) {
        FailWith(command,
                 path + ": not a usable public key: " + problem +
                     "; ask the recipient for the .pubkey file that dcf keygen made",
                 kExitUsage);
    }
    request.securityKey.SetPublicKeyText(*digits);
    request.sealForKey = true;
}

}  // namespace dcftool
