#include "platform/ErrorText.h"

#include <gtest/gtest.h>

#include "platform/Text.h"

namespace {

// Each platform has its own words; the ones a user must recognise are in both.
TEST(SystemErrorText, NamesTheFailureInThePlatformsWords) {
    for (const auto& [code, word] : {std::pair{platform::kErrorFileNotFound, "file"},
                                     {platform::kErrorAccessDenied, "denied"},
                                     {platform::kErrorDirectoryNotSupported, "directory"},
                                     {platform::kErrorAlreadyExists, "exists"}}) {
        const std::string text = platform::Utf16ToUtf8(platform::SystemErrorText(code));
        EXPECT_NE(text.find(word), std::string::npos) << code << ": " << text;
    }
    EXPECT_TRUE(platform::SystemErrorText(9999).empty());
}

}  // namespace
