#include "Shared/Tagger/LongPath.h"

#include <gtest/gtest.h>

namespace {

using Zelmarik::ToLongPath;

TEST(ToLongPath, DrivePathsTakeThePrefix) {
    EXPECT_EQ(ToLongPath(u"C:\\dir\\f.txt"), u"\\\\?\\C:\\dir\\f.txt");
    // Not examined further: relative and empty paths are prefixed as they are.
    EXPECT_EQ(ToLongPath(u"dir\\f.txt"), u"\\\\?\\dir\\f.txt");
    EXPECT_EQ(ToLongPath(u""), u"\\\\?\\");
    EXPECT_EQ(ToLongPath(nullptr), u"\\\\?\\");
}

TEST(ToLongPath, ServerPathsBecomeUnc) {
    EXPECT_EQ(ToLongPath(u"\\\\srv\\sh\\f.txt"), u"\\\\?\\UNC\\srv\\sh\\f.txt");
    EXPECT_EQ(ToLongPath(u"\\\\"), u"\\\\?\\UNC\\");
}

TEST(ToLongPath, LongPathsStayAsTheyAre) {
    EXPECT_EQ(ToLongPath(u"\\\\?\\C:\\dir\\f.txt"), u"\\\\?\\C:\\dir\\f.txt");
    EXPECT_EQ(ToLongPath(u"\\\\?\\UNC\\srv\\sh\\f.txt"), u"\\\\?\\UNC\\srv\\sh\\f.txt");
    // Only "\\?\" counts as long: a device path is taken for a server path.
    EXPECT_EQ(ToLongPath(u"\\\\.\\C:\\f"), u"\\\\?\\UNC\\.\\C:\\f");
}

}  // namespace
