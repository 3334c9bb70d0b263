#include "Common/Common/Exception.h"

#include <gtest/gtest.h>

#include "platform/ErrorText.h"
#include "platform/Text.h"

namespace {

constexpr const char* kTaggerSource = "Shared\\Tagger\\tagger";

TEST(Exception, PlainTextCarriesTheLocationBehindTheLastSeparator) {
    const Zelmarik::Exception plain(kTaggerSource, 317);
    EXPECT_STREQ(plain.what(), "Exception (tagger [317])");
    EXPECT_EQ(plain.PlainText, "Exception");

    const Zelmarik::Exception formatted("src/a/b.cpp", 12, "bad %s %d", "value", 7);
    EXPECT_STREQ(formatted.what(), "bad value 7 (b.cpp [12])");
    EXPECT_EQ(formatted.PlainText, "bad value 7");
}

TEST(Exception, EmptyFormatGivesInvalidArgumentsAndXmlPutsItsMarkInFront) {
    EXPECT_EQ(Zelmarik::Exception("f", 1, "%s", "").PlainText, "Invalid arguments");
    EXPECT_EQ(Zelmarik::Exception("f", 1, nullptr).PlainText, "Invalid arguments");
    const Zelmarik::XMLException error("Common\\DataCategory\\CategoryContainer", 889,
                                       "Missing category id");
    EXPECT_STREQ(error.what(), "Invalid XML\nMissing category id (CategoryContainer [889])");
}

TEST(SystemException, DescribesTheErrorWithoutTheFullStop) {
    // The system's own wording differs between systems ("Access is denied.\r\n", "Permission
    // denied"): the line end and a final full stop are dropped.
    std::string message = platform::Utf16ToUtf8(platform::SystemErrorText(5));
    while (!message.empty() &&
           (message.back() == '\n' || message.back() == '\r' || message.back() == '.')) {
        message.pop_back();
    }
    ASSERT_FALSE(message.empty());

    const Zelmarik::SystemException denied(kTaggerSource, 317, 5);
    EXPECT_EQ(denied.Text, "Error code: 5 (" + message + ") (tagger [317])");
    EXPECT_EQ(denied.PlainText, "Error code: 5 (" + message + ")");
    EXPECT_EQ(denied.HResult, static_cast<std::int32_t>(0x80070005u));

    const Zelmarik::SystemException unknown(kTaggerSource, 317, 9999);
    EXPECT_STREQ(unknown.what(), "Error code: 9999 (tagger [317])");
    EXPECT_EQ(Zelmarik::HResultFromError(-5), -5);
    EXPECT_EQ(Zelmarik::HResultFromError(0x12345), static_cast<std::int32_t>(0x80072345u));
}

TEST(Exception, CarriesThisThreadsTraceInListOrder) {
    ASSERT_FALSE(Zelmarik::StackTraceDisabled);
    {
        Zelmarik::ScopeTraceFrame outer("outer");
        Zelmarik::ScopeTraceFrame inner("inner");
        const Zelmarik::Exception traced("f", 2, "m");
        EXPECT_EQ(traced.Text, "m (f [2])\r\nStackTrace:\r\ninner\r\nouter");
    }
    EXPECT_EQ(Zelmarik::ScopeTrace(), nullptr);
    EXPECT_STREQ(Zelmarik::Exception("f", 2, "m").what(), "m (f [2])");
}

}  // namespace
