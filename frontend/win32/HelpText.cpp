#include <array>

#include "DcfVersion.h"
#include "frontend/HelpText.h"

namespace {

// The seven pieces of the system, then the version.
constexpr std::array<std::string_view, 8> kPieces = {
    "Self-extraction archive: \r\n",
    "Run it without parameters or with undefined ones to show GUI and control extraction by "
    "it.\r\n",
    "For extraction from command line, use both of parameters -key and -target.\r\nParameters: ",
    "\r\n\t-h|-help\tPrint this help",
    "\r\n\t-key path\tSet path to private key for extraction",
    "\r\n\t-target path\tSet path to target directory for extraction",
    "\r\n\t-source path\tSet path to source archive to for extraction\r\n",
    "Vomdrel " DCF_VERSION_TEXT "\r\n",
};

}  // namespace

std::span<const std::string_view> HelpTextPieces() {
    return kPieces;
}
