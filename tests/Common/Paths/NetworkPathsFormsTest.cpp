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

void ExpectSameFields(const CNetworkPaths& a, const CNetworkPaths& b) {
    EXPECT_EQ(a.Local, b.Local);
    EXPECT_EQ(a.Netbios, b.Netbios);
    EXPECT_EQ(a.Fqdn, b.Fqdn);
    EXPECT_EQ(a.Ipv4, b.Ipv4);
    EXPECT_EQ(a.Ipv6, b.Ipv6);
    EXPECT_EQ(a.PathSelector, b.PathSelector);
}

TEST(NetworkPathsBinary, LayoutOfTheStoredForm) {
    CNetworkPaths paths(u"C:", u"", u"", u"", u"", 3);
    paths.CacheTag = 0x01020304;
    paths.PathFlags = 5;
    const Zelmarik::Blob blob = Zelmarik::SerializeToBlob(paths);
    const std::vector<std::uint8_t> expected = {
        50, 0, 0, 0,                              // blob length
        2,  0, 0, 0, 'C', 0, ':', 0, 0, 0,        // Local
        0,  0, 0, 0, 0,   0, 0,   0, 0, 0, 0, 0,  // Netbios, Fqdn
        0,  0, 0, 0, 0,   0, 0,   0, 0, 0, 0, 0,  // Ipv4, Ipv6
        3,  0, 0, 0, 4,   3, 2,   1, 5, 0, 0, 0,  // selector, tag, flags
    };
    EXPECT_EQ(std::vector<std::uint8_t>(blob.Data(), blob.Data() + blob.Size()), expected);
}

TEST(NetworkPathsBinary, RoundTripAndDamage) {
    CNetworkPaths paths(u"C:\\dir\\", u"\\\\pc\\c$\\dir\\", u"\\\\pc.example.org\\c$\\dir\\",
                        u"\\\\10.1.2.3\\c$\\dir\\", u"\\\\fe80--1.ipv6-literal.net\\c$\\dir\\", -7);
    paths.CacheTag = 0xFFFFFFFF;
    paths.PathFlags = 0x80000001;
    paths.Separator = u'/';
    const Zelmarik::Blob blob = Zelmarik::SerializeToBlob(paths);

    CNetworkPaths read;
    ASSERT_TRUE(Zelmarik::DeserializeFromBlob(blob.Bytes(), read));
    ExpectSameFields(read, paths);
    EXPECT_EQ(read.CacheTag, paths.CacheTag);
    EXPECT_EQ(read.PathFlags, paths.PathFlags);
    // The separator is not stored.
    EXPECT_EQ(read.Separator, u'\\');

    // Every cut of the record fails to read.
    std::vector<std::uint8_t> bytes(blob.Data(), blob.Data() + blob.Size());
    for (std::size_t cut = 4; cut < bytes.size(); cut += 3) {
        Zelmarik::CRawReader reader(std::span<const std::uint8_t>(bytes.data() + 4, cut - 4));
        CNetworkPaths partial;
        EXPECT_FALSE(partial.Deserialize(reader)) << cut;
    }
}

// An element with attributes only, which is all the XML form of a location has.
class AttributesNode : public Zelmarik::IXmlNode {
public:
    explicit AttributesNode(std::map<std::string, std::string> attributes)
        : attributes_(std::move(attributes)) {}
    std::string Name() const override { return "paths"; }
    Zelmarik::XmlNodeType Type() const override { return Zelmarik::XmlNodeType::Element; }
    std::unique_ptr<IXmlNode> FirstChildElement(std::string_view) const override { return nullptr; }
    std::unique_ptr<IXmlNode> NextSiblingElement(std::string_view) const override {
        return nullptr;
    }
    std::optional<std::string> Attribute(std::string_view name) const override {
        const auto found = attributes_.find(std::string(name));
        return found == attributes_.end() ? std::nullopt : std::optional(found->second);
    }

private:
    std::map<std::string, std::string> attributes_;
};

TEST(NetworkPathsXml, WritesAllSixKeysInOrder) {
    const CNetworkPaths paths(u"C:\\\u00e9t\u00e9\\", u"", u"\\\\a&b\\\"s\"", u"", u"", -2);
    Zelmarik::XmlElementBuilder element("paths");
    paths.WriteXml(element);
    EXPECT_EQ(element.AttributesText,
              " lfp=\"C:\\\xc3\xa9t\xc3\xa9\\\" nbs=\"\" fqdn=\"\\\\a&amp;b\\&quot;s&quot;\" "
              "ipv4=\"\" ipv6=\"\" pathSelector=\"-2\"");
}

TEST(NetworkPathsXml, ReadsEveryKeyAndDefaultsMissingOnes) {
    const AttributesNode node({{"lfp", "C:\\\xc3\xa9\\"},
                               {"nbs", "\\\\pc\\c$\\"},
                               {"fqdn", "\\\\pc.example\\c$\\"},
                               {"ipv4", "\\\\10.0.0.1\\c$\\"},
                               {"ipv6", "\\\\fe80--1\\c$\\"},
                               {"pathSelector", "4"}});
    CNetworkPaths read;
    read.ReadXml(&node);
    ExpectSameFields(read, CNetworkPaths(u"C:\\\u00e9\\", u"\\\\pc\\c$\\", u"\\\\pc.example\\c$\\",
                                         u"\\\\10.0.0.1\\c$\\", u"\\\\fe80--1\\c$\\", 4));

    // Keys that are missing, and a null element, leave empty forms and selector 0.
    const AttributesNode sparse({{"fqdn", "f"}, {"pathSelector", ""}});
    read.ReadXml(&sparse);
    ExpectSameFields(read, CNetworkPaths(u"", u"", u"f", u"", u""));
    read.PathSelector = 9;
    read.ReadXml(nullptr);
    ExpectSameFields(read, CNetworkPaths());
}

}  // namespace
