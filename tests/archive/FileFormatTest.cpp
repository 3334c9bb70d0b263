#include "archive/detail/FileFormat.h"

#include <gtest/gtest.h>

#include "archive/detail/FileFormatDCF.h"

namespace {

TEST(FileFormat, ExtensionMatchIgnoresCaseAndNeedsTheWholeExtension) {
    DCCFileFormatDCF dcf;
    for (const char16_t* name : {u"archive.dcf", u"ARCHIVE.DCF", u".Dcf"}) {
        EXPECT_TRUE(dcf.IsFormatOf(name));
    }
    for (const char16_t* name : {u"dcf", u"archive.dcf ", u"archive_dcf", u""}) {
        EXPECT_FALSE(dcf.IsFormatOf(name));
    }
    EXPECT_EQ(FoldCase(u"\u00C9T\u00C9 \u0416 \u0401"), u"\u00E9t\u00E9 \u0436 \u0451");
}

}  // namespace
