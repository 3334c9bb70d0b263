#include "platform/ErrorText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

#include "platform/Text.h"

namespace {

// Each platform has its own words; the ones a user must recognise are in both.
TEST(SystemErrorText, NamesTheFailureInThePlatformsWords) {
    for (const auto& [code, word] :
         {std::pair{platform::kErrorFileNotFound, "file"}, {platform::kErrorAccessDenied, "denied"},
          {platform::kErrorAlreadyExists, "exists"}}) {
        std::string text = platform::Utf16ToUtf8(platform::SystemErrorText(code));
        std::transform(text.begin(), text.end(), text.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        EXPECT_NE(text.find(word), std::string::npos) << code << ": " << text;
    }
    EXPECT_TRUE(platform::SystemErrorText(9999).empty());
}

}  // namespace
