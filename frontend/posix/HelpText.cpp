#include <array>

#include "DcfVersion.h"
#include "frontend/HelpText.h"

namespace {

// The pieces of the Windows stub, in the words of a terminal program, then the version.
constexpr std::array<std::string_view, 8> kPieces = {
    "Self-extracting archive\n",
    "Run it without parameters, or with others than those below, to be asked on the terminal "
    "for the target folder and the password or private key.\n",
    "For extraction from the command line, give both -key and -target.\nParameters:",
    "\n\t-h|-help\tPrint this help",
    "\n\t-key path\tSet the path of the private key for extraction",
    "\n\t-target path\tSet the path of the target folder for extraction",
    "\n\t-source path\tSet the path of the archive to extract instead of this program\n",
    "Vomdrel " DCF_VERSION_TEXT "\n",
};

}  // namespace

std::span<const std::string_view> HelpTextPieces() {
    return kPieces;
}
