#include "archive/detail/FileFormat.h"

#include <gtest/gtest.h>

#include <memory>

#include "archive/detail/ArchiveExtractRequest.h"
#include "archive/detail/FileFormatDCF.h"
#include "archive/detail/FileFormatSFX.h"
#include "platform/Module.h"

namespace {

TEST(FileFormat, ExtensionMatchIgnoresCaseAndNeedsTheWholeExtension) {
    DCCFileFormatDCF dcf;
    EXPECT_TRUE(dcf.IsFormatOf(u"archive.dcf"));
    EXPECT_TRUE(dcf.IsFormatOf(u"ARCHIVE.DCF"));
    EXPECT_TRUE(dcf.IsFormatOf(u".Dcf"));
    EXPECT_FALSE(dcf.IsFormatOf(u"dcf"));  // shorter than the extension
    EXPECT_FALSE(dcf.IsFormatOf(u"archive.dcf "));
    EXPECT_FALSE(dcf.IsFormatOf(u"archive_dcf"));
    EXPECT_FALSE(dcf.IsFormatOf(u""));
    EXPECT_EQ(FoldCase(u"\u00C9T\u00C9 \u0416 \u0401"), u"\u00E9t\u00E9 \u0436 \u0451");
}

TEST(FileFormat, CreateInstanceMakesIndependentObjectsOfTheSameFormat) {
    DCCFileFormatDCF dcf;
    const std::u16string stub = u"other stub";
    std::unique_ptr<DCCFileFormat> copy(dcf.CreateInstance(&stub));
    EXPECT_EQ(copy->GetFormatId(), 2);

    DCCFileFormatSFX sfx(u"mine");
    std::unique_ptr<DCCFileFormat> with_stub(sfx.CreateInstance(&stub));
    EXPECT_EQ(static_cast<DCCFileFormatSFX&>(*with_stub).StubPath(), stub);
    std::unique_ptr<DCCFileFormat> with_default(sfx.CreateInstance(nullptr));
    EXPECT_EQ(static_cast<DCCFileFormatSFX&>(*with_default).StubPath(),
              DCCFileFormatSFX::DefaultStubPath());
}

TEST(FileFormat, DefaultStubSitsBesideTheProgram) {
    const std::u16string folder = platform::GetModuleDirectory();
    ASSERT_FALSE(folder.empty());
    EXPECT_TRUE(folder.back() == u'/' || folder.back() == u'\\');
    EXPECT_EQ(DCCFileFormatSFX().StubPath().rfind(folder + u"Vomdrel", 0), 0u);
}

TEST(FileFormat, NullRequestOrSettingsIsABadArgument) {
    DCCFileFormatDCF dcf;
    DCCFileFormatSFX sfx;
    ArchiveExtractRequest request;
    DCCArchiveUserSettings settings;
    EXPECT_EQ(dcf.ExtractArchive(nullptr, &settings), FORMAT_BAD_ARGUMENT);
    EXPECT_EQ(dcf.ExtractArchive(&request, nullptr), FORMAT_BAD_ARGUMENT);
    EXPECT_EQ(sfx.ExtractArchive(nullptr, &settings), FORMAT_BAD_ARGUMENT);
    EXPECT_EQ(sfx.ExtractArchive(&request, nullptr), FORMAT_BAD_ARGUMENT);
}

}  // namespace
