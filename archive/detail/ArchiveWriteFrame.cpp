#include "archive/detail/ArchiveWriteFrame.h"

#include <new>

#include "archive/detail/ArchivePathSettling.h"
#include "archive/detail/ArchiveReplacement.h"

FormatResult WriteThroughTemporaryFile(const DCCFileFormat& format, ArchiveWriteRequest* request,
                                       DCCArchiveUserSettings* settings,
                                       const ArchiveFiller& fill) {
    try {
        bool skip = false;
        const FormatResult prepared = PrepareArchivePath(format, request, settings, skip);
        if (prepared != FORMAT_OK || skip) {
            return prepared;
        }
        ArchiveTempFile temp;
        if (!temp.Reserve(FolderOfPath(request->archiveName))) {
            return FORMAT_FAILED;
        }
        const FormatResult written = fill(temp.Path());
        return written == FORMAT_OK
                   ? temp.MoveTo(request->archiveName, request->replaceWhenComplete)
                   : written;
    } catch (const std::bad_alloc&) {
        return FORMAT_FAILED;  // the temporary file is gone with its holder
    }
}
