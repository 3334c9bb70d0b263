#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Common/Common/RawSerializer.h"
#include "Common/Paths/NetworkPaths.h"

namespace {

using Zelmarik::CNetworkPaths;

void ExpectSameForms(const CNetworkPaths& a, const CNetworkPaths& b) {
    EXPECT_EQ(a.DebugLog(), b.DebugLog());
    EXPECT_EQ(a.PathSelector, b.PathSelector);
}

TEST(NetworkPathsBinary, LayoutRoundTripAndDamage) {
    CNetworkPaths paths(u"C:", u"", u"", u"", u"", 3);
    paths.CacheTag = 0x01020304;
    paths.PathFlags = 5;
    paths.Separator = u'/';
    const Zelmarik::Blob blob = Zelmarik::SerializeToBlob(paths);
    const std::vector<std::uint8_t> expected = {
        50, 0, 0, 0,                              // blob length
        2,  0, 0, 0, 'C', 0, ':', 0, 0, 0,        // Local
        0,  0, 0, 0, 0,   0, 0,   0, 0, 0, 0, 0,  // Netbios, Fqdn
        0,  0, 0, 0, 0,   0, 0,   0, 0, 0, 0, 0,  // Ipv4, Ipv6
        3,  0, 0, 0, 4,   3, 2,   1, 5, 0, 0, 0,  // selector, tag, flags
    };
    ASSERT_EQ(std::vector<std::uint8_t>(blob.Data(), blob.Data() + blob.Size()), expected);

    CNetworkPaths read;
    ASSERT_TRUE(Zelmarik::DeserializeFromBlob(blob.Bytes(), read));
    ExpectSameForms(read, paths);
    EXPECT_EQ(read.CacheTag, paths.CacheTag);
    EXPECT_EQ(read.PathFlags, paths.PathFlags);
    // The separator is not stored.
    EXPECT_EQ(read.Separator, u'\\');

    for (std::size_t cut = 0; cut < expected.size() - 4; ++cut) {
        Zelmarik::CRawReader reader(std::span<const std::uint8_t>(expected.data() + 4, cut));
        EXPECT_FALSE(CNetworkPaths().Deserialize(reader)) << cut;
    }
}

// An element with attributes only, which is all the XML form of a location has.
class AttributesNode : public Zelmarik::IXmlNode {
public:
    explicit AttributesNode(std::map<std::string, std::string> attributes)
        : attributes_(std::move(attributes)) {}
    std::string Name() const override { return "paths"; }
    Zelmarik::XmlNodeType Type() const override { return Zelmarik::XmlNodeType::Element; }
    std::unique_ptr<IXmlNode> FirstChildElement(std::string_view) const override { return {}; }
    std::unique_ptr<IXmlNode> NextSiblingElement(std::string_view) const override { return {}; }
    std::optional<std::string> Attribute(std::string_view name) const override {
        const auto found = attributes_.find(std::string(name));
        return found == attributes_.end() ? std::nullopt : std::optional(found->second);
    }

private:
    std::map<std::string, std::string> attributes_;
};

TEST(NetworkPathsXml, WritesAllSixKeysInOrderAndReadsThemBack) {
    const CNetworkPaths paths(u"C:\\\u00e9\\", u"", u"\\\\a&b\\\"s\"", u"", u"\\\\v6\\", -2);
    Zelmarik::XmlElementBuilder element("paths");
    paths.WriteXml(element);
    EXPECT_EQ(element.AttributesText,
              " lfp=\"C:\\\xc3\xa9\\\" nbs=\"\" fqdn=\"\\\\a&amp;b\\&quot;s&quot;\" ipv4=\"\" "
              "ipv6=\"\\\\v6\\\" pathSelector=\"-2\"");

    // What a parser gives for that element.
    const AttributesNode node({{"lfp", "C:\\\xc3\xa9\\"},
                               {"nbs", ""},
                               {"fqdn", "\\\\a&b\\\"s\""},
                               {"ipv4", ""},
                               {"ipv6", "\\\\v6\\"},
                               {"pathSelector", "-2"}});
    CNetworkPaths read;
    read.ReadXml(&node);
    ExpectSameForms(read, paths);
}

TEST(NetworkPathsXml, MissingKeysAndANullElementReadAsEmpty) {
    CNetworkPaths read(u"old", u"old", u"old", u"old", u"old", 9);
    const AttributesNode sparse({{"fqdn", "f"}, {"pathSelector", ""}});
    read.ReadXml(&sparse);
    ExpectSameForms(read, CNetworkPaths(u"", u"", u"f", u"", u""));
    read.PathSelector = 9;
    read.ReadXml(nullptr);
    ExpectSameForms(read, CNetworkPaths());
}

}  // namespace
