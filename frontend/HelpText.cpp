#include "frontend/HelpText.h"

#include "DcfVersion.h"
#include "platform/Console.h"

void WriteHelpText() {
    for (const std::string_view piece : HelpTextPieces()) {
        platform::WriteStandardOutput(piece);
    }
    platform::WriteStandardOutput("Vomdrel " DCF_VERSION_TEXT "\r\n");
}
