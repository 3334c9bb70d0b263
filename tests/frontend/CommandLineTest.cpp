#include "frontend/CommandLine.h"

#include <gtest/gtest.h>

namespace {

using Tokens = std::vector<std::u16string>;

// Blanks separate, tabs do not; quotes group and are not part of the token, an inner quote is
// ordinary, an empty quoted token stays, and an unclosed quote ends the line.
TEST(CommandLineParse, TokensAsTheStubTakesThem) {
    const std::pair<const char16_t*, Tokens> cases[] = {
        {u"  -key  a.privkey   -target\tx  ", {u"-key", u"a.privkey", u"-target\tx"}},
        {u"", {}},
        {nullptr, {}},
        {u"-target \"C:\\My Files\\out\" -key k",
         {u"-target", u"C:\\My Files\\out", u"-key", u"k"}},
        {u"\"a b\"c", {u"a b", u"c"}},
        {u"\"\" x", {u"", u"x"}},
        {u"ab\"c d", {u"ab\"c", u"d"}},
        {u"-key \"no end here", {u"-key", u"no end here"}},
        {u"a \"\"\"", {u"a", u"", u""}}};
    CCommandLine line;
    line.Parse(u"earlier tokens go");
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        line.Parse(cases[i].first);  // what an earlier Parse found is gone
        EXPECT_EQ(line.Tokens(), cases[i].second) << "case " << i;
    }
}

TEST(CommandLineOptions, MatchWholeTokensInEitherCaseFirstOneCounts) {
    CCommandLine line;
    line.Parse(u"-KEY first -key second -keys x -Target");
    EXPECT_EQ(line.FindOption(u"-key"), 0);
    EXPECT_EQ(line.FindOption(u"-target"), 6);
    EXPECT_EQ(line.FindOption(u"-ke"), -1);
    EXPECT_EQ(line.FindOption(u"-source"), -1);

    std::u16string value = u"untouched";
    EXPECT_TRUE(line.GetOptionValue(u"-key", value));
    EXPECT_EQ(value, u"first");
    value = u"untouched";
    EXPECT_FALSE(line.GetOptionValue(u"-target", value));  // last token: no value
    EXPECT_EQ(value, u"untouched");
    EXPECT_FALSE(line.GetOptionValue(u"-source", value));
}

TEST(CommandLineOptions, ValuesAreTakenByPosition) {
    CCommandLine line;
    line.Parse(u"-key -target x -source \"\" y");
    std::u16string value;
    EXPECT_TRUE(line.GetOptionValue(u"-key", value));
    EXPECT_EQ(value, u"-target");
    EXPECT_FALSE(line.GetOptionValue(u"-source", value));  // an empty value does not count
    EXPECT_EQ(value, u"");
}

}  // namespace
