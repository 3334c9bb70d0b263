#include "archive/detail/ArchiveNames.h"

#include <gtest/gtest.h>

#include "archive/Archive.h"
#include "platform/File.h"

namespace {

constexpr char16_t kSep = platform::kPathSeparator;

TEST(ArchiveNames, TargetRootLosesOneSeparator) {
    const std::u16string root = std::u16string(u"out");
    EXPECT_EQ(TargetRoot(root), root);
    EXPECT_EQ(TargetRoot(root + kSep), root);
    EXPECT_EQ(TargetRoot(root + kSep + kSep), root + kSep);
    EXPECT_EQ(TargetRoot(u""), u"");
}

TEST(ArchiveNames, PlainNamesPassAndHostileOnesDoNot) {
    for (const std::u16string_view name :
         {u"\\a", u"\\a\\b.txt", u"\\x..y", u"\\...a", u"\\\u00e9t\u00e9"}) {
        EXPECT_TRUE(IsSafeArchiveName(name)) << std::string(name.begin(), name.end());
    }
    for (const std::u16string_view name :
         {u"", u"a", u"\\", u"\\..", u"\\a\\..", u"\\.", u"\\a\\.\\b", u"\\a\\\\b", u"\\a\\",
          u"\\a:b", u"\\c:", u"\\a/b", u"/a"}) {
        EXPECT_FALSE(IsSafeArchiveName(name)) << std::string(name.begin(), name.end());
    }
    EXPECT_FALSE(IsSafeArchiveName(std::u16string_view(u"\\a\0b", 4)));
}

TEST(ArchiveNames, DeviceNamesAndTrailingDotsWhereBackslashSeparates) {
    const bool refused = kSep == u'\\';
    for (const std::u16string_view name :
         {u"\\CON", u"\\d\\nul.txt", u"\\com1", u"\\LPT9.log", u"\\aux .x", u"\\con.d\\f", u"\\a.",
          u"\\a ", u"\\d.\\f"}) {
        EXPECT_EQ(IsSafeArchiveName(name), !refused) << std::string(name.begin(), name.end());
        // Refused everywhere for a name that must open on every system.
        EXPECT_FALSE(IsPortableArchiveName(name)) << std::string(name.begin(), name.end());
    }
    for (const std::u16string_view name : {u"\\com0", u"\\console", u"\\a b.c", u"\\x..y"}) {
        EXPECT_TRUE(IsSafeArchiveName(name)) << std::string(name.begin(), name.end());
        EXPECT_TRUE(IsPortableArchiveName(name)) << std::string(name.begin(), name.end());
    }
    EXPECT_FALSE(IsPortableArchiveName(u"\\a:b"));
    EXPECT_FALSE(IsPortableArchiveName(u"a"));
}

}  // namespace
