#include "platform/Text.h"

#include <gtest/gtest.h>

namespace {

TEST(TextConversion, RoundTripsEveryPlane) {
    const std::u16string text = u"a\u00e9\u4e2d\U0001F600z";
    const std::string utf8 = platform::Utf16ToUtf8(text);
    EXPECT_EQ(utf8, "a\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80z");
    EXPECT_EQ(platform::Utf8ToUtf16(utf8), text);
}

TEST(TextConversion, UnpairedSurrogatesBecomeReplacement) {
    const std::u16string lone_high = {u'a', char16_t(0xD800), u'b'};
    const std::u16string high_at_end = {u'x', char16_t(0xDBFF)};
    EXPECT_EQ(platform::Utf16ToUtf8(lone_high),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(platform::Utf16ToUtf8(high_at_end), "x\xEF\xBF\xBD");
}

TEST(TextConversion, MalformedUtf8BecomesReplacement) {
    const std::u16string bad = u"\uFFFD";
    EXPECT_EQ(platform::Utf8ToUtf16("\xC0\xAF"), bad + bad);            // overlong slash
    EXPECT_EQ(platform::Utf8ToUtf16("\xED\xA0\x80"), bad + bad + bad);  // encoded surrogate
    EXPECT_EQ(platform::Utf8ToUtf16("\xF4\x90\x80\x80"), bad + bad + bad + bad);  // > U+10FFFF
    EXPECT_EQ(platform::Utf8ToUtf16("ab\xE4\xB8"), u"ab" + bad + bad);            // cut short
    for (const char* malformed : {"\xC0\xAF", "\xED\xA0\x80", "latin\xE9.txt", "ab\xE4\xB8"}) {
        EXPECT_FALSE(platform::IsWellFormedUtf8(malformed)) << malformed;
    }
    EXPECT_TRUE(platform::IsWellFormedUtf8("a\xC3\xA9\xEF\xBF\xBD"));  // a real U+FFFD is kept
}

}  // namespace
