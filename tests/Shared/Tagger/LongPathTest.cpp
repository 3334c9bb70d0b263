#include "Shared/Tagger/LongPath.h"

#include <gtest/gtest.h>

namespace {

// Drive, relative and empty paths take the prefix as they are, server paths become UNC, and
// only "\\?\" counts as long already: a device path is taken for a server path.
TEST(ToLongPath, PrefixesEachKindOfPathOnce) {
    const std::pair<const char16_t*, std::u16string> cases[] = {
        {u"C:\\dir\\f.txt", u"\\\\?\\C:\\dir\\f.txt"},
        {u"", u"\\\\?\\"},
        {nullptr, u"\\\\?\\"},
        {u"\\\\srv\\sh\\f.txt", u"\\\\?\\UNC\\srv\\sh\\f.txt"},
        {u"\\\\?\\C:\\dir\\f.txt", u"\\\\?\\C:\\dir\\f.txt"},
        {u"\\\\?\\UNC\\srv\\sh\\f.txt", u"\\\\?\\UNC\\srv\\sh\\f.txt"},
        {u"\\\\.\\C:\\f", u"\\\\?\\UNC\\.\\C:\\f"},
    };
    for (const auto& [path, expected] : cases) {
        EXPECT_EQ(Zelmarik::ToLongPath(path), expected) << (path == nullptr ? 0 : path[0]);
    }
}

}  // namespace
