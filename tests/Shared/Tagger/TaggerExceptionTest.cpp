#include "Shared/Tagger/TaggerException.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* kSource = "Shared\\Tagger\\tagger";

TEST(TaggerException, MessageThenContextWithoutLocation) {
    Zelmarik::STaggerContext context;
    context.File = u"\\\\?\\C:\\d\\f\u00e9.txt";
    context.StreamFile = context.File + u":ZelTag5";
    context.Size = 48;
    context.Attributes = 0x21;
    context.RevertTimes = true;

    const Zelmarik::TaggerException error(kSource, 317, 5, Zelmarik::TaggerException::kTargetFile,
                                          &context, "Unable to open target file, error: %d", 5);
    EXPECT_EQ(error.Text,
              "Unable to open target file, error: 5, \r\n"
              "Type: 2, File: \\\\?\\C:\\d\\f\xC3\xA9.txt, "
              "Stream-File: \\\\?\\C:\\d\\f\xC3\xA9.txt:ZelTag5, Size: 48, Attributes: 21, "
              "flags = RevertTimes: YES, RevertAttributes: NO, DeleteStreamOnClose: NO");
    EXPECT_EQ(error.Type, 2);
    EXPECT_EQ(error.ErrorCode, 5);
    EXPECT_EQ(error.HResult, static_cast<std::int32_t>(0x80070005u));
    EXPECT_EQ(error.PlainText.rfind("Error code: 5", 0), 0u);
    EXPECT_EQ(error.Line, 317);
}

TEST(TaggerException, NullContextLeavesTheDescriptionOut) {
    const Zelmarik::TaggerException error(kSource, 10, 87, Zelmarik::TaggerException::kStream,
                                          nullptr, "Context is nullptr");
    EXPECT_STREQ(error.what(), "Context is nullptr");
    const Zelmarik::TaggerException empty(kSource, 10, 87, 1, nullptr, "%s", "");
    EXPECT_STREQ(empty.what(), "Invalid arguments");
}

}  // namespace
