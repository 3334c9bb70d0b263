#include "frontend/HelpText.h"

#include "platform/Console.h"

void WriteHelpText() {
    for (const std::string_view piece : HelpTextPieces()) {
        platform::WriteStandardOutput(piece);
    }
}
