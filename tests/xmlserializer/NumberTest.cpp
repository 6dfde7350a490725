#include "velmo/utilities/serializer/CastConvertor.h"
#include "velmo/utilities/serializer/Convertor.h"
#include "velmo/utilities/serializer/TextTrait.h"
#include "velmo/utilities/xmlserializer/XmlTraitSerializer.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <tinyxml.h>

namespace {

using velmo::utilities::serializer::CastConvertor;
using velmo::utilities::serializer::Convertor;
using velmo::utilities::serializer::TextTrait;
using velmo::utilities::xmlserializer::XmlResult;
using velmo::utilities::xmlserializer::XmlTraitSerializer;

enum Code : int
{
    Known = 1000
};

typedef XmlTraitSerializer<TextTrait<unsigned long long, Convertor<unsigned long long>>> UnsignedText;
typedef XmlTraitSerializer<TextTrait<Code, CastConvertor<Code, int>>> CodeText;

const std::string accepted = "Success";

std::string conversionFailure(const std::string& text)
{
    return "Conversion failed (Code 71): Unable to convert from string \"" + text + "\".";
}

struct UnsignedCase
{
    const char* text;
    bool ok;
    unsigned long long value;
};

void PrintTo(const UnsignedCase& c, std::ostream* os)
{
    *os << "\"" << c.text << "\"";
}

class UnsignedNumber : public ::testing::TestWithParam<UnsignedCase>
{
};

TEST_P(UnsignedNumber, ReadsOnlyBareNumbers)
{
    const UnsignedCase& c = GetParam();
    const TiXmlText node(c.text);
    unsigned long long value = 7;
    const XmlResult result = UnsignedText::fromXml(&node, value);
    if (c.ok) {
        EXPECT_EQ(accepted, result.format());
        EXPECT_EQ(c.value, value);
    } else {
        EXPECT_EQ(conversionFailure(c.text), result.format());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, UnsignedNumber,
    ::testing::Values(
        UnsignedCase{"12345", true, 12345}, UnsignedCase{"0", true, 0}, UnsignedCase{"0x1F", true, 31},
        UnsignedCase{"0x1f", true, 31}, UnsignedCase{"0X1F", false, 0}, UnsignedCase{"1F", false, 0},
        UnsignedCase{"18446744073709551615", true, 18446744073709551615ULL},
        UnsignedCase{"18446744073709551616", false, 0}, UnsignedCase{"0x10000000000000000", false, 0},
        UnsignedCase{" 12345", false, 0}, UnsignedCase{"12345 ", false, 0}, UnsignedCase{"123 45", false, 0},
        UnsignedCase{"12345\n", false, 0}, UnsignedCase{"\r12345", false, 0},
        UnsignedCase{"12\t345", false, 0}, UnsignedCase{"12345\v", false, 0}, UnsignedCase{"-1", false, 0},
        UnsignedCase{"-0", false, 0}, UnsignedCase{"12-", false, 0}, UnsignedCase{"12345abc", false, 0},
        UnsignedCase{"abc", false, 0}, UnsignedCase{"", false, 0}));

struct CodeCase
{
    const char* text;
    bool ok;
    int value;
};

void PrintTo(const CodeCase& c, std::ostream* os)
{
    *os << "\"" << c.text << "\"";
}

class ResultCodeNumber : public ::testing::TestWithParam<CodeCase>
{
};

TEST_P(ResultCodeNumber, ReadsSignedIntegers)
{
    const CodeCase& c = GetParam();
    const TiXmlText node(c.text);
    Code value = Known;
    const XmlResult result = CodeText::fromXml(&node, value);
    if (c.ok) {
        EXPECT_EQ(accepted, result.format());
        EXPECT_EQ(c.value, static_cast<int>(value));
    } else {
        EXPECT_EQ(conversionFailure(c.text), result.format());
        EXPECT_EQ(Known, value);
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, ResultCodeNumber,
                         ::testing::Values(CodeCase{"1003", true, 1003}, CodeCase{"-1", true, -1},
                                           CodeCase{"-5", true, -5}, CodeCase{"0x10", true, 16},
                                           CodeCase{"2147483647", true, 2147483647},
                                           CodeCase{"2147483648", false, 0}, CodeCase{"- 1", false, 0},
                                           CodeCase{"1003 ", false, 0}, CodeCase{"10O3", false, 0},
                                           CodeCase{"", false, 0}));

TEST(TextNode, OnlyATextNodeCarriesANumber)
{
    const TiXmlElement element("capture_timestamp");
    const TiXmlComment comment("12");
    unsigned long long value = 0;
    EXPECT_EQ("Unexpected node type (Code 70): Expected an xml text node",
              UnsignedText::fromXml(&element, value).format());
    EXPECT_EQ("Unexpected node type (Code 70): Expected an xml text node",
              UnsignedText::fromXml(&comment, value).format());
    EXPECT_EQ("Unexpected node type (Code 70): Expected an xml text node",
              UnsignedText::fromXml(NULL, value).format());
}

TEST(TextNode, WritesPlainDecimalDigits)
{
    const unsigned long long values[] = {0, 60, 18446744073709551615ULL};
    const char* texts[] = {"0", "60", "18446744073709551615"};
    for (int i = 0; i < 3; ++i) {
        TiXmlNode* node = NULL;
        EXPECT_EQ(accepted, UnsignedText::toXml(values[i], node).format());
        ASSERT_NE(nullptr, node);
        EXPECT_EQ(TiXmlNode::TINYXML_TEXT, node->Type());
        EXPECT_FALSE(node->ToText()->CDATA());
        EXPECT_EQ(texts[i], node->ValueStr());
        delete node;
    }
}

} // namespace
