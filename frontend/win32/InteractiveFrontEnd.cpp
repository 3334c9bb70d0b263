#include "frontend/InteractiveFrontEnd.h"

#include "frontend/HelpText.h"
#include "frontend/LocalizedStrings.h"
#include "frontend/win32/ExtractionDialog.h"
#include "platform/Console.h"

void RunInteractiveFrontEnd() {
    if (!RunExtractionDialog(GetModuleHandleW(nullptr), LocalizedStrings.ResolveDialogId())) {
        // Without its dialog the stub can still tell how to use it from the command line.
        platform::AttachProcessConsole();
        WriteHelpText();
    }
}
