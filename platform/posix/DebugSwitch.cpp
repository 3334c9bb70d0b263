#include "platform/DebugSwitch.h"

#include <charconv>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <string>
#include <string_view>

namespace platform {
namespace {

constexpr std::int32_t kMissing = -1;

std::int32_t ParseSetting(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return kMissing;
    }
    text = text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return kMissing;
    }
    return value;
}

std::int32_t ReadSettingFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return kMissing;
    }
    // A number needs a few characters; anything longer is not one.
    constexpr std::size_t kLongest = 64;
    std::string text(kLongest + 1, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    const auto got = static_cast<std::size_t>(file.gcount());
    if (got > kLongest) {
        return kMissing;
    }
    text.resize(got);
    return ParseSetting(text);
}

std::string UserConfigFolder() {
    const char* config = std::getenv("XDG_CONFIG_HOME");
    if (config != nullptr && config[0] == '/') {
        return config;
    }
    const char* home = std::getenv("HOME");
    if (home != nullptr && home[0] != '\0') {
        return std::string(home) + "/.config";
    }
    return {};
}

}  // namespace

std::int32_t MachineDebugLocks() {
    return ReadSettingFile("/etc/zelmarik/DebugLocks");
}

std::int32_t UserDebugLocks() {
    const char* variable = std::getenv("ZELMARIK_DEBUG_LOCKS");
    if (variable != nullptr) {
        return ParseSetting(variable);
    }
    const std::string folder = UserConfigFolder();
    return folder.empty() ? kMissing : ReadSettingFile(folder + "/zelmarik/DebugLocks");
}

}  // namespace platform
