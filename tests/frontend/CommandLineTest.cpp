#include "frontend/CommandLine.h"

#include <gtest/gtest.h>

namespace {

using Tokens = std::vector<std::u16string>;

Tokens Split(const char16_t* text) {
    CCommandLine line;
    line.Parse(text);
    return line.Tokens();
}

TEST(CommandLineParse, BlanksSeparateAndTabsDoNot) {
    EXPECT_EQ(Split(u"  -key  a.privkey   -target\tx  "),
              (Tokens{u"-key", u"a.privkey", u"-target\tx"}));
    EXPECT_EQ(Split(u"single"), (Tokens{u"single"}));
    EXPECT_TRUE(Split(u"").empty());
    EXPECT_TRUE(Split(u"    ").empty());
    EXPECT_TRUE(Split(nullptr).empty());
}

TEST(CommandLineParse, QuotesGroupAndAreNotPartOfTheToken) {
    EXPECT_EQ(Split(u"-target \"C:\\My Files\\out\" -key k"),
              (Tokens{u"-target", u"C:\\My Files\\out", u"-key", u"k"}));
    EXPECT_EQ(Split(u"\"a b\"c"), (Tokens{u"a b", u"c"}));   // the quote ends the token
    EXPECT_EQ(Split(u"\"\" x"), (Tokens{u"", u"x"}));        // empty token stays
    EXPECT_EQ(Split(u"ab\"c d"), (Tokens{u"ab\"c", u"d"}));  // inner quote is ordinary
    EXPECT_EQ(Split(u"\"x\"\"\""), (Tokens{u"x", u""}));
}

TEST(CommandLineParse, UnclosedQuoteEndsTheLine) {
    EXPECT_EQ(Split(u"-key \"no end here"), (Tokens{u"-key", u"no end here"}));
    EXPECT_EQ(Split(u"\""), (Tokens{u""}));
    EXPECT_EQ(Split(u"a \"\"\""), (Tokens{u"a", u"", u""}));
}

TEST(CommandLineParse, ParseDiscardsEarlierTokens) {
    CCommandLine line;
    line.Parse(u"one two");
    line.Parse(u"three");
    EXPECT_EQ(line.Tokens(), (Tokens{u"three"}));
    line.Parse(nullptr);
    EXPECT_TRUE(line.Tokens().empty());
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
