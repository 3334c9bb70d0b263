#include "Common/Paths/PathRoot.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Zelmarik::GetPathRoot;
using Zelmarik::SplitRootPath;

TEST(GetPathRoot, FindsDriveAndShareRoots) {
    struct Case {
        std::u16string path;
        std::u16string root;
    };
    const Case cases[] = {
        {u"C:\\a\\b", u"C:\\"},
        {u"d:", u"d:\\"},
        {u"\\\\?\\C:\\x", u"C:\\"},
        {u"\\\\?\\E:", u"E:\\"},
        {u"\\\\srv\\sh", u"\\\\srv\\sh\\"},
        {u"\\\\srv\\sh\\", u"\\\\srv\\sh\\"},
        {u"\\\\srv\\sh\\dir\\file", u"\\\\srv\\sh\\"},
        {u"\\\\srv\\\\", u"\\\\srv\\\\"},
    };
    for (const Case& c : cases) {
        std::u16string root = u"old";
        EXPECT_TRUE(GetPathRoot(c.path, root)) << std::string(c.path.begin(), c.path.end());
        EXPECT_EQ(root, c.root);
    }
}

TEST(GetPathRoot, RefusesWhatHasNoRoot) {
    for (const std::u16string path :
         {u"", u"\\\\srv", u"\\\\s", u"\\\\", u"relative\\path", u"\\single\\slash", u"C"}) {
        std::u16string root = u"old";
        EXPECT_FALSE(GetPathRoot(path, root)) << std::string(path.begin(), path.end());
        EXPECT_EQ(root, u"old");
    }
}

TEST(SplitRootPath, SplitsAtTheRootAndDoublesAFinalBackslash) {
    EXPECT_EQ(SplitRootPath(u"C:\\a\\b\\"),
              std::make_pair(std::u16string(u"C:\\"), std::u16string(u"a\\b\\\\")));
    EXPECT_EQ(SplitRootPath(u"C:\\a\\b"),
              std::make_pair(std::u16string(u"C:\\"), std::u16string(u"a\\b")));
    EXPECT_EQ(SplitRootPath(u"\\\\srv\\sh\\x"),
              std::make_pair(std::u16string(u"\\\\srv\\sh\\"), std::u16string(u"x")));
    EXPECT_EQ(SplitRootPath(u"C:\\"), std::make_pair(std::u16string(u"C:\\"), std::u16string()));
    EXPECT_EQ(SplitRootPath(u"\\\\srv\\sh"),
              std::make_pair(std::u16string(u"\\\\srv\\sh\\"), std::u16string()));
}

TEST(SplitRootPath, KeepsTheShortcutFolderAsRoot) {
    const std::u16string folder =
        u"C:\\Users\\u\\AppData\\Roaming\\Microsoft\\Windows\\Network Shortcuts\\Share (srv)";
    EXPECT_EQ(SplitRootPath(folder + u"\\target.lnk"),
              std::make_pair(folder + u"\\", std::u16string()));
    EXPECT_EQ(SplitRootPath(folder + u"\\sub\\file"),
              std::make_pair(folder + u"\\", std::u16string(u"sub\\file")));
    EXPECT_EQ(SplitRootPath(folder + u"\\sub\\"),
              std::make_pair(folder + u"\\", std::u16string(u"sub\\\\")));
    // Without a backslash behind the folder the whole path is the root.
    EXPECT_EQ(SplitRootPath(folder), std::make_pair(folder + u"\\", std::u16string()));
}

}  // namespace
