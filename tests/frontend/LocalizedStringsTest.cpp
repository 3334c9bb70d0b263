#include "frontend/LocalizedStrings.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

const std::u16string kLanguages[] = {u"English",
                                     u"\u010ce\u0161tina",
                                     u"Fran\u00e7ais",
                                     u"Espa\u00f1ol",
                                     u"Deutsch",
                                     u"Portugu\u00eas",
                                     u"\u0420\u0443\u0441\u0441\u043a\u0438\u0439",
                                     u"Ti\u1ebfng Vi\u1ec7t",
                                     u"Polski",
                                     u"\u65e5\u672c\u8a9e"};

TEST(LocalizedStrings, EveryLanguageHasAStatusLineAndTheLastOneStaysSelected) {
    CLocalizedStrings strings;
    strings.BuildStringTable();
    EXPECT_EQ(strings.GetCurrentLanguage(), kLanguages[9]);
    for (const std::u16string& language : kLanguages) {
        ASSERT_TRUE(strings.SelectLanguage(language));
        // The status line drops the last character, which must be the "!".
        EXPECT_EQ(strings.GetLocalizedString(u"IDS_DECOMPRESSING_FILE").back(), u'!');
        EXPECT_NE(strings.GetLocalizedString(u"IDS_DECOMPRESSING_FILE").find(u"%filename%"),
                  std::u16string::npos);
    }
}

TEST(LocalizedStrings, FallbackToTheFirstLanguageThenTheFixedText) {
    CLocalizedStrings strings;
    EXPECT_EQ(strings.GetLocalizedString(u"IDS_ERROR"), kStringLoadFailure);  // nothing at all
    ASSERT_TRUE(strings.AddLanguage(u"First"));
    ASSERT_TRUE(strings.AddLanguage(u"Second"));
    EXPECT_FALSE(strings.AddLanguage(u"First"));
    strings.SetLocalizedString(u"ONLY_FIRST", u"one", u"First");
    strings.SetLocalizedString(u"BOTH", u"first both", u"First");
    strings.SetLocalizedString(u"BOTH", u"second both", u"Second");
    strings.SetLocalizedString(u"BOTH", u"ignored: the first text stays", u"Second");
    strings.SetLocalizedString(u"EMPTY", u"", u"Second");  // takes the first language's text

    ASSERT_TRUE(strings.SelectLanguage(u"Second"));
    EXPECT_EQ(strings.GetLocalizedString(u"ONLY_FIRST"), u"one");
    EXPECT_EQ(strings.GetLocalizedString(u"BOTH"), u"second both");
    EXPECT_EQ(strings.GetLocalizedString(u"EMPTY"), u"");
    EXPECT_EQ(strings.GetLocalizedString(u"NOWHERE"), kStringLoadFailure);

    EXPECT_FALSE(strings.SelectLanguage(u"second"));  // exact comparison
    EXPECT_EQ(strings.GetCurrentLanguage(), u"First");
}

TEST(LocalizedStrings, DialogTemplatesByEnglishOrNativeName) {
    CLocalizedStrings strings;
    strings.BuildStringTable();
    const std::pair<std::u16string, std::uint16_t> cases[] = {
        {u"English", 129}, {u"\u010ce\u0161tina", 130}, {u"Deutsch", 136}, {u"Polski", 129}};
    for (const auto& [language, id] : cases) {
        strings.SelectLanguage(language);
        EXPECT_EQ(strings.ResolveDialogId(), id);
    }
    CLocalizedStrings english_names;
    english_names.AddLanguage(u"German");
    english_names.AddLanguage(u"Klingon");
    english_names.SelectLanguage(u"German");
    EXPECT_EQ(english_names.ResolveDialogId(), 136);
    english_names.SelectLanguage(u"Klingon");
    EXPECT_EQ(english_names.ResolveDialogId(), 129);
}

TEST(ReplaceFilenameMarker, ReplacesEveryMarkerButNotInsideTheValue) {
    std::u16string text = u"a %filename% b %filename%!";
    const std::u16string value = u"x%filename%y";
    EXPECT_EQ(ReplaceFilenameMarker(text, &value), 2);
    EXPECT_EQ(text, u"a x%filename%y b x%filename%y!");

    std::u16string null_value = u"[%filename%]";
    EXPECT_EQ(ReplaceFilenameMarker(null_value, nullptr), 1);
    EXPECT_EQ(null_value, u"[]");
}

TEST(LocalizedStrings, ReadersOnTwoThreadsGetWholeCopies) {
    CLocalizedStrings strings;
    strings.BuildStringTable();
    strings.SelectLanguage(u"English");
    auto read = [&strings] {
        for (int i = 0; i < 2000; ++i) {
            ASSERT_EQ(strings.GetLocalizedString(u"IDS_QUESTION"), u"Question");
        }
    };
    std::thread worker(read);
    read();
    worker.join();
}

}  // namespace
