#include "archive/DcfReader.h"

FormatResult ReadArchiveBody(platform::File&, ArchiveExtractRequest&, DCCArchiveUserSettings&,
                             std::vector<std::u16string>&, DCIFileFormatCallback*) {
    // The reader of the image body is not built yet: every image is refused.
    return FORMAT_FAILED;
}
