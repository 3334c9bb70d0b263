#include "frontend/StubEntry.h"

#include "frontend/ExtractionDriver.h"
#include "frontend/ExtractionParameters.h"
#include "frontend/HelpText.h"
#include "frontend/InteractiveFrontEnd.h"
#include "frontend/LocalizedStrings.h"
#include "platform/Console.h"
#include "platform/Module.h"

namespace {

void ExtractFromCommandLine(const CCommandLine& commandLine) {
    platform::AttachProcessConsole();
    CExtractionParameters& parameters = ExtractionParameters;
    std::u16string value;
    if (commandLine.GetOptionValue(u"-key", value)) {
        parameters.keyGiven = parameters.securityKey.PrivateFromFile(value.c_str()) == 0;
    }
    if (commandLine.GetOptionValue(u"-target", value)) {
        parameters.targetPath = value;
    }
    if (commandLine.GetOptionValue(u"-source", value)) {
        parameters.sourcePath = value;
    } else {
        parameters.sourcePath = platform::ModulePath();
    }
    parameters.consoleMode = true;
    platform::WriteStandardOutput("\r\nExtracting...\r\n");
    platform::WriteStandardOutput(RunExtraction() ? "Extraction has successfully finished\r\n"
                                                  : "Extraction has failed\r\n");
}

}  // namespace

int RunStub(const CCommandLine& commandLine) {
    LocalizedStrings.BuildStringTable();
    LocalizedStrings.SelectLanguage(u"English");
    if (commandLine.FindOption(u"-help") >= 0 || commandLine.FindOption(u"-h") >= 0) {
        platform::AttachProcessConsole();
        WriteHelpText();
    } else if (commandLine.FindOption(u"-key") >= 0 && commandLine.FindOption(u"-target") >= 0) {
        ExtractFromCommandLine(commandLine);
    } else {
        ExtractionParameters.sourcePath = platform::ModulePath();  // "-source" is not read here
        RunInteractiveFrontEnd();
    }
    return 0;
}
