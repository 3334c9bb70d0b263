#include "frontend/HelpText.h"

#include "DcfVersion.h"
#include "platform/Console.h"

void WriteHelpText() {
    for (const std::string_view piece : kHelpTextPieces) {
        platform::WriteStandardOutput(piece);
    }
    platform::WriteStandardOutput("Vomdrel " DCF_VERSION_TEXT "\r\n");
}
