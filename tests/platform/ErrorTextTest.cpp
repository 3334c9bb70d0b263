#include "platform/ErrorText.h"

#include <gtest/gtest.h>

namespace {

TEST(SystemErrorText, GivesTheSystemSentenceOrNothing) {
    for (const platform::ErrorCode code :
         {platform::kErrorFileNotFound, platform::kErrorPathNotFound, platform::kErrorAccessDenied,
          platform::kErrorInvalidParameter, platform::kErrorAlreadyExists}) {
        const std::u16string text = platform::SystemErrorText(code);
        ASSERT_GE(text.size(), 3u) << code;
        EXPECT_EQ(text.substr(text.size() - 3), u".\r\n") << code;
    }
    EXPECT_TRUE(platform::SystemErrorText(9999).empty());
}

}  // namespace
