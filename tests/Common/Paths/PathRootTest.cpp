#include "Common/Paths/PathRoot.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Zelmarik::GetPathRoot;
using Zelmarik::SplitRootPath;
using Split = std::pair<std::u16string, std::u16string>;

TEST(GetPathRoot, DrivesSharesAndRefusals) {
    const std::pair<std::u16string, std::u16string> roots[] = {
        {u"C:\\a\\b", u"C:\\"},
        {u"d:", u"d:\\"},
        {u"\\\\?\\C:\\x", u"C:\\"},
        {u"\\\\srv\\sh", u"\\\\srv\\sh\\"},
        {u"\\\\srv\\sh\\d\\f", u"\\\\srv\\sh\\"},
    };
    for (const auto& [path, expected] : roots) {
        std::u16string root;
        EXPECT_TRUE(GetPathRoot(path, root));
        EXPECT_EQ(root, expected);
    }
    for (const std::u16string path : {u"", u"\\\\srv", u"\\\\", u"rel\\path", u"\\one\\slash"}) {
        std::u16string root = u"old";
        EXPECT_FALSE(GetPathRoot(path, root));
        EXPECT_EQ(root, u"old");
    }
}

TEST(SplitRootPath, RestOfAPathEndingInABackslashGetsAnother) {
    EXPECT_EQ(SplitRootPath(u"C:\\a\\b\\"), Split(u"C:\\", u"a\\b\\\\"));
    EXPECT_EQ(SplitRootPath(u"\\\\srv\\sh\\x"), Split(u"\\\\srv\\sh\\", u"x"));
    EXPECT_EQ(SplitRootPath(u"\\\\srv\\sh"), Split(u"\\\\srv\\sh\\", u""));
}

TEST(SplitRootPath, KeepsTheShortcutFolderAsRoot) {
    const std::u16string folder =
        u"C:\\Users\\u\\AppData\\Roaming\\Microsoft\\Windows\\Network Shortcuts\\Share (srv)";
    EXPECT_EQ(SplitRootPath(folder + u"\\target.lnk"), Split(folder + u"\\", u""));
    EXPECT_EQ(SplitRootPath(folder + u"\\sub\\"), Split(folder + u"\\", u"sub\\\\"));
    EXPECT_EQ(SplitRootPath(folder), Split(folder + u"\\", u""));
}

}  // namespace
