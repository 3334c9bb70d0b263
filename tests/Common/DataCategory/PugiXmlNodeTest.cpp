// The category container's XML form read through the pugixml node adapter.
#include <gtest/gtest.h>

#include <pugixml.hpp>

#include "Common/Common/Exception.h"
#include "Common/Common/PugiXmlNode.h"
#include "Common/DataCategory/CategoryContainer.h"
#include "Common/DataCategory/CategoryDefaults.h"
#include "tests/Common/DataCategory/RecordBytes.h"

namespace tests {
namespace {

using Zelmarik::CCategoryContainer;
using Zelmarik::PugiXmlNode;

pugi::xml_document Parse(const std::string& text) {
    pugi::xml_document document;
    EXPECT_TRUE(document.load_string(text.c_str())) << text;
    return document;
}

// Reads the first element of `xml` into `container`; gives what it raised, "" for nothing.
std::string ReadXml(const std::string& xml, CCategoryContainer& container) {
    const pugi::xml_document document = Parse(xml);
    const PugiXmlNode element(document.first_child());
    try {
        container.ReadXml(&element);
    } catch (const Zelmarik::XMLException& error) {
        return error.what();
    }
    return "";
}

// Only the identifiers travel: what is read replaces what was there, sorted through Add, with
// the duplicate dropped and other elements, attributes and comments passed over.
TEST(CategoryContainerXml, ReadsTheElementItselfOrAsChild) {
    CCategoryContainer written;
    written.Add(SampleCategory());
    written.Add(Zelmarik::AllDataCategory());
    Zelmarik::XmlElementBuilder root;
    written.WriteXml(root);
    const std::string categories =
        "<dataCategories><other id=\"000000ff-0000-0000-0000-000000000000\"/><!-- note -->"
        "<category id=\"01234567-89AB-CDEF-0123-456789ABCDEF\" name=\"x\"></category>" +
        root.Body.substr(root.Body.find("<category"));
    for (const std::string& xml :
         {root.Body, categories, "<settings><first/>" + categories + "</settings>"}) {
        SCOPED_TRACE(xml);
        CCategoryContainer read;
        Zelmarik::CDlpCategory earlier;
        earlier.Id = IdOf(3);
        read.Add(earlier);
        EXPECT_EQ(ReadXml(xml, read), "");
        ASSERT_EQ(read.Categories.size(), 2u);
        EXPECT_EQ(read.Categories.front().Id, SampleId());
        EXPECT_EQ(read.Categories.back().Id, Zelmarik::AllDataCategory().Id);
    }

    CCategoryContainer emptied;
    emptied.Add(SampleCategory());
    EXPECT_EQ(ReadXml("<dataCategories/>", emptied), "");
    EXPECT_TRUE(emptied.Categories.empty());
    // An id that is no identifier gives the zero one.
    EXPECT_EQ(ReadXml("<dataCategories><category id=\"not-a-guid\"/></dataCategories>", emptied),
              "");
    ASSERT_EQ(emptied.Categories.size(), 1u);
    EXPECT_EQ(emptied.Categories.front().Id, Zelmarik::CGuid());
}

TEST(CategoryContainerXml, ExceptionTextsAndWhatStays) {
    CCategoryContainer container;
    EXPECT_EQ(ReadXml("<root><categories/></root>", container)
                  .rfind("Invalid XML\nMissing dataCategories node (CategoryContainer [", 0),
              0u);
    // What was read before the bad element stays.
    for (const char* bad : {"<category/>", "<category id=\"\"/>", "<category ID=\"x\"/>"}) {
        const std::string xml = std::string("<dataCategories>") +
                                "<category id=\"000000ff-0000-0000-0000-000000000000\"/>" + bad +
                                "<category id=\"00000001-0000-0000-0000-000000000000\"/>"
                                "</dataCategories>";
        EXPECT_EQ(ReadXml(xml, container)
                      .rfind("Invalid XML\nMissing category id (CategoryContainer [", 0),
                  0u)
            << bad;
        ASSERT_EQ(container.Categories.size(), 1u);
        EXPECT_EQ(container.Categories.front().Id.Bytes[0], 0xFF);
    }
    // The element must be the node or its child, not a grandchild.
    const pugi::xml_document document = Parse("<settings><dataCategories/></settings>");
    const PugiXmlNode documentNode(document);
    EXPECT_THROW(container.ReadXml(&documentNode), Zelmarik::XMLException);
}

}  // namespace
}  // namespace tests
