#include "Shared/Tagger/TaggerException.h"

#include <gtest/gtest.h>

namespace {

// The message, then the context in UTF-8 with its attributes in hex; no source location.
TEST(TaggerException, MessageThenContextWithoutLocation) {
    Zelmarik::STaggerContext context;
    context.File = u"\\\\?\\C:\\d\\f\u00e9.txt";
    context.StreamFile = context.File + u":ZelTag5";
    context.Size = 48;
    context.Attributes = 0x21;
    context.RevertTimes = true;

    const Zelmarik::TaggerException error("Shared\\Tagger\\tagger", 317, 5,
                                          Zelmarik::TaggerException::kTargetFile, &context,
                                          "Unable to open target file, error: %d", 5);
    EXPECT_EQ(error.Text,
              "Unable to open target file, error: 5, \r\n"
              "Type: 2, File: \\\\?\\C:\\d\\f\xC3\xA9.txt, "
              "Stream-File: \\\\?\\C:\\d\\f\xC3\xA9.txt:ZelTag5, Size: 48, Attributes: 21, "
              "flags = RevertTimes: YES, RevertAttributes: NO, DeleteStreamOnClose: NO");
    EXPECT_EQ(error.HResult, static_cast<std::int32_t>(0x80070005u));
    EXPECT_EQ(error.PlainText.rfind("Error code: 5", 0), 0u);
}

}  // namespace
