#include "velmo/utilities/serializer/Convertor.h"
#include "velmo/utilities/serializer/NamedTextTrait.h"
#include "velmo/utilities/xmlserializer/ChildAccess.h"
#include "velmo/utilities/xmlserializer/XmlTraitSerializer.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <tinyxml.h>

namespace {

using velmo::utilities::serializer::Convertor;
using velmo::utilities::serializer::NamedTextTrait;
using velmo::utilities::xmlserializer::ChildNotFound;
using velmo::utilities::xmlserializer::XmlResult;
using velmo::utilities::xmlserializer::XmlTraitSerializer;
using velmo::utilities::xmlserializer::detail::ChildAccess;

constexpr char depthTag[] = "depth";
constexpr char noteTag[] = "note";

typedef NamedTextTrait<unsigned long long, depthTag, false, Convertor<unsigned long long>> DepthTrait;
typedef NamedTextTrait<std::string, noteTag, true, Convertor<std::string>> NoteTrait;

// Parses `xml` and keeps its first element for the test to read.
class Element
{
public:
    explicit Element(const char* xml)
    {
        _document.Parse(xml);
        _element = _document.FirstChildElement();
    }

    const TiXmlElement& get() const { return *_element; }

private:
    TiXmlDocument _document;
    const TiXmlElement* _element;
};

struct NumberCase
{
    const char* xml;
    const char* formatted;
    unsigned long long value;
};

void PrintTo(const NumberCase& c, std::ostream* os)
{
    *os << c.xml;
}

class NamedNumber : public ::testing::TestWithParam<NumberCase>
{
};

TEST_P(NamedNumber, ReadsTheElementText)
{
    const NumberCase& c = GetParam();
    const Element element(c.xml);
    unsigned long long value = 99;
    const XmlResult result = XmlTraitSerializer<DepthTrait>::fromXml(element.get(), value, DepthTrait::tag);
    EXPECT_EQ(c.formatted, result.format());
    EXPECT_EQ(c.value, value);
}

INSTANTIATE_TEST_SUITE_P(
    Elements, NamedNumber,
    ::testing::Values(
        NumberCase{"<depth>40</depth>", "Success", 40},
        NumberCase{"<depth><!-- ms -->40</depth>", "Success", 40},
        NumberCase{"<depth><unit>ms</unit>40</depth>", "Success", 40},
        NumberCase{
            "<depth>4x0</depth>",
            "Conversion failed (Code 71): Unable to convert from string \"4x0\". (While desserializing "
            "\"depth\")",
            99},
        NumberCase{
            "<depth><!-- 40 --></depth>",
            "Child not found (Code 69): Node \"depth\" does not contain an expected text node child (While "
            "desserializing \"depth\")",
            99},
        NumberCase{
            "<depth/>",
            "Child not found (Code 69): Node \"depth\" does not contain an expected text node child (While "
            "desserializing \"depth\")",
            99},
        NumberCase{"<width>40</width>",
                   "Wrong XML node (Code 68): Trying to deserialize the wrong element.Found \"width\" "
                   "expected depth",
                   99}));

TEST(NamedText, SuccessCarriesTheUnseenSuffix)
{
    const Element element("<depth>40</depth>");
    unsigned long long value = 0;
    const XmlResult result = XmlTraitSerializer<DepthTrait>::fromXml(element.get(), value, DepthTrait::tag);
    EXPECT_TRUE(result.isSuccess());
    EXPECT_EQ(" (While desserializing \"depth\")", result.getMainMessage());
}

class OptionalText : public ::testing::TestWithParam<const char*>
{
};

TEST_P(OptionalText, ElementWithoutTextReadsEmpty)
{
    const Element element(GetParam());
    std::string value = "previous";
    const XmlResult result = XmlTraitSerializer<NoteTrait>::fromXml(element.get(), value, NoteTrait::tag);
    EXPECT_EQ("Success", result.format());
    EXPECT_EQ("", value);
}

INSTANTIATE_TEST_SUITE_P(Elements, OptionalText,
                         ::testing::Values("<note/>", "<note></note>", "<note><!-- nothing --></note>",
                                           "<note>   </note>"));

TEST(OptionalText, KeepsBlanksInsideTheText)
{
    const Element element("<note>not in call</note>");
    std::string value;
    EXPECT_EQ("Success",
              XmlTraitSerializer<NoteTrait>::fromXml(element.get(), value, NoteTrait::tag).format());
    EXPECT_EQ("not in call", value);
}

TEST(OptionalText, WrongElementStillFails)
{
    const Element element("<text/>");
    std::string value = "previous";
    EXPECT_EQ(
        "Wrong XML node (Code 68): Trying to deserialize the wrong element.Found \"text\" expected note",
        XmlTraitSerializer<NoteTrait>::fromXml(element.get(), value, NoteTrait::tag).format());
    EXPECT_EQ("previous", value);
}

TEST(ChildAccess, FindsTheFirstElementOfTheTagOnly)
{
    const Element parent("<Result><depthx>1</depthx><depth>2</depth><depth>3</depth></Result>");
    const TiXmlNode* child = NULL;
    EXPECT_EQ("Success", ChildAccess<DepthTrait>::get(parent.get(), child).format());
    ASSERT_NE(nullptr, child);
    EXPECT_EQ("2", std::string(child->FirstChild()->Value()));
}

TEST(ChildAccess, MissingElementNamesTagAndParent)
{
    const Element parent("<Result><Depth>1</Depth><!-- depth --></Result>");
    const TiXmlNode* child = NULL;
    const XmlResult result = ChildAccess<DepthTrait>::get(parent.get(), child);
    EXPECT_EQ(ChildNotFound, result.getErrorCode());
    EXPECT_EQ("Child not found (Code 69): No element node \"depth\" found in node \"Result\"",
              result.format());
}

} // namespace
