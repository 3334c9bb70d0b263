#include <gtest/gtest.h>

#include <pugixml.hpp>

#include "Common/Common/Exception.h"
#include "Common/Common/PugiXmlNode.h"
#include "Common/DataCategory/CategoryContainer.h"
#include "Common/DataCategory/CategoryDefaults.h"
#include "tests/Common/DataCategory/RecordBytes.h"

namespace tests {
namespace {

using Zelmarik::PugiXmlNode;

pugi::xml_document Parse(const char* text) {
    pugi::xml_document document;
    EXPECT_TRUE(document.load_string(text)) << text;
    return document;
}

TEST(PugiXmlNode, AnswersTheNodeQuestions) {
    const pugi::xml_document document =
        Parse("<r a=\"1\" e=\"\">text<c n=\"x\"/><d/><c n=\"y\"/><c/></r>");
    const PugiXmlNode root(document);
    EXPECT_EQ(root.Type(), Zelmarik::XmlNodeType::Document);
    EXPECT_EQ(root.FirstChildElement("c"), nullptr);

    const auto r = root.FirstChildElement("r");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->Name(), "r");
    EXPECT_EQ(r->Type(), Zelmarik::XmlNodeType::Element);
    EXPECT_EQ(r->Attribute("a"), "1");
    EXPECT_EQ(r->Attribute("e"), "");
    EXPECT_EQ(r->Attribute("missing"), std::nullopt);
    EXPECT_EQ(PugiXmlNode(document.first_child().first_child()).Type(),
              Zelmarik::XmlNodeType::Text);

    std::vector<std::optional<std::string>> names;
    for (auto c = r->FirstChildElement("c"); c; c = c->NextSiblingElement("c")) {
        names.push_back(c->Attribute("n"));
    }
    EXPECT_EQ(names, (std::vector<std::optional<std::string>>{"x", "y", std::nullopt}));
}

TEST(PugiXmlNode, ContainerXmlRoundTrip) {
    Zelmarik::CCategoryContainer container;
    container.Add(SampleCategory());
    container.Add(Zelmarik::AllDataCategory());
    Zelmarik::XmlElementBuilder root;
    container.WriteXml(root);

    const pugi::xml_document document = Parse(root.Body.c_str());
    const PugiXmlNode documentNode(document);
    const PugiXmlNode element(document.child("dataCategories"));
    for (const Zelmarik::IXmlNode* node : {static_cast<const Zelmarik::IXmlNode*>(&documentNode),
                                           static_cast<const Zelmarik::IXmlNode*>(&element)}) {
        Zelmarik::CCategoryContainer read;
        read.ReadXml(node);
        // Only the identifiers travel, so the categories come back in identifier order.
        ASSERT_EQ(read.Categories.size(), 2u);
        EXPECT_EQ(read.Categories.front().Id, SampleId());
        EXPECT_EQ(read.Categories.back().Id, Zelmarik::AllDataCategory().Id);
    }
}

TEST(PugiXmlNode, ContainerFromParsedText) {
    const pugi::xml_document document = Parse(
        "<settings><dataCategories>"
        "<category id=\"AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA\" name=\"all\"/>"
        "<!-- comment --><category id=\"01234567-89ab-cdef-0123-456789abcdef\"></category>"
        "</dataCategories></settings>");
    Zelmarik::CCategoryContainer container;
    const PugiXmlNode settings(document.child("settings"));
    container.ReadXml(&settings);
    ASSERT_EQ(container.Categories.size(), 2u);
    EXPECT_EQ(container.Categories.front().Id, SampleId());
    EXPECT_EQ(container.Categories.back().Id, Zelmarik::AllDataCategory().Id);

    const PugiXmlNode documentNode(document);
    EXPECT_THROW(container.ReadXml(&documentNode), Zelmarik::XMLException)
        << "the element must be the node or its child";
}

}  // namespace
}  // namespace tests
