#pragma once
// Joins the front end to the archive code: one call of the self-extracting format's
// ExtractArchive with what ExtractionParameters holds.

#include <string>

// True when the archive was extracted. Without a key or password, or with a source that is
// missing, empty or unreadable, it returns false before the archive code runs.
bool RunExtraction();

// Creates a folder and every missing level above it; true when the folder exists afterwards
// or the path is empty. Either separator is accepted.
bool CreateFolderPath(const std::u16string& path);
