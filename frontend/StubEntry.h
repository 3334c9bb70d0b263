#pragma once
// The stub's one pass: help text, extraction from the command line, or the interactive way.

#include "frontend/CommandLine.h"

// Runs the stub on a parsed command line. Always 0: a caller learns the outcome from the text.
int RunStub(const CCommandLine& commandLine);
