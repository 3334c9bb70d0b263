#include "frontend/HelpText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "DcfVersion.h"

namespace {

TEST(HelpText, IsTheDialogStubsTextWordForWordThenTheVersion) {
    std::string help;
    for (const std::string_view piece : HelpTextPieces()) {
        help += piece;
    }
    const std::string system =
        "Self-extraction archive: \r\n"
        "Run it without parameters or with undefined ones to show GUI and control "
        "extraction by it.\r\n"
        "For extraction from command line, use both of parameters -key and -target.\r\n"
        "Parameters: \r\n"
        "\t-h|-help\tPrint this help\r\n"
        "\t-key path\tSet path to private key for extraction\r\n"
        "\t-target path\tSet path to target directory for extraction\r\n"
        "\t-source path\tSet path to source archive to for extraction\r\n";
    EXPECT_EQ(help.substr(0, system.size()), system);
    EXPECT_EQ(help.substr(std::min(system.size(), help.size())),
              "Vomdrel " DCF_VERSION_TEXT "\r\n");
}

}  // namespace
