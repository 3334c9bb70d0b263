#include "frontend/InteractiveFrontEnd.h"

#include "frontend/HelpText.h"
#include "platform/Console.h"

void RunInteractiveFrontEnd() {
    // The extraction dialog is not built yet: show how the stub is used instead.
    platform::AttachProcessConsole();
    WriteHelpText();
}
