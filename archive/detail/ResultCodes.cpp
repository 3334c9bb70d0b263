#include "archive/detail/ResultCodes.h"

const char* DescribeFormatResult(FormatResult result) {
    switch (result) {
        case FORMAT_OK:
            return "done";
        case FORMAT_FAILED:
            return "not an archive of this format, or the archive is damaged";
        case FORMAT_NO_PUBLIC_KEY:
            return "no public key was given to seal the archive for";
        case FORMAT_BAD_KEY:
            return "wrong password or private key";
        case FORMAT_WRITE_FAILED:
        case FORMAT_OUTPUT_WRITE_FAILED:
            return "writing failed (is the disk full?)";
        case FORMAT_STUB_COPY_FAILED:
            return "the extraction stub could not be copied";
        case FORMAT_TARGET_OPEN_FAILED:
            return "a target file could not be created";
        case FORMAT_SOURCE_OPEN_FAILED:
            return "a source file could not be opened or read";
        case FORMAT_SOURCE_EMPTY:
            return "the source file is empty or cannot be sized";
        case FORMAT_NO_PAYLOAD_ROOM:
            return "the file holds no extraction stub in front of the archive";
        case FORMAT_BAD_ARGUMENT:
            return "invalid arguments";
        case FORMAT_CANCELLED:
            return "cancelled";
        case FORMAT_REPLACE_FAILED:
            return "the old archive could not be replaced";
        case FORMAT_RETRY_FOLDER:
            return "another folder was chosen";
        default:
            return "unknown failure";
    }
}
