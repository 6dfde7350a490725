#include "velmo/utilities/serializer/CastConvertor.h"
#include "velmo/utilities/serializer/Convertor.h"
#include "velmo/utilities/serializer/TextTrait.h"
#include "velmo/utilities/xmlserializer/XmlTraitSerializer.h"

#include <gtest/gtest.h>

#include <string>
#include <tinyxml.h>

namespace {

using velmo::utilities::serializer::CastConvertor;
using velmo::utilities::serializer::Convertor;
using velmo::utilities::serializer::TextTrait;
using velmo::utilities::xmlserializer::XmlTraitSerializer;

enum Code : int
{
    Known = 1000
};

using UnsignedText = XmlTraitSerializer<TextTrait<unsigned long long, Convertor<unsigned long long>>>;
using CodeText = XmlTraitSerializer<TextTrait<Code, CastConvertor<Code, int>>>;

std::string expected(const char* text, bool ok)
{
    return ok ? "Success"
              : "Conversion failed (Code 71): Unable to convert from string \"" + std::string(text) + "\".";
}

TEST(Number, UnsignedReadsOnlyBareNumbers)
{
    const struct
    {
        const char* text;
        bool ok;
        unsigned long long value;
    } table[] = {{"12345", true, 12345},
                 {"0x1F", true, 31},
                 {"0X1F", false, 0},
                 {"18446744073709551615", true, 18446744073709551615ULL},
                 {"18446744073709551616", false, 0},
                 {" 12345", false, 0},
                 {"12345 ", false, 0},
                 {"\r12345", false, 0},
                 {"12345\n", false, 0},
                 {"-1", false, 0},
                 {"12345abc", false, 0},
                 {"", false, 0}};
    for (const auto& row : table) {
        const TiXmlText node(row.text);
        unsigned long long value = 7;
        EXPECT_EQ(expected(row.text, row.ok), UnsignedText::fromXml(&node, value).format()) << row.text;
        if (row.ok) {
            EXPECT_EQ(row.value, value) << row.text;
        }
    }
}

TEST(Number, ResultCodeReadsSignedIntegers)
{
    const struct
    {
        const char* text;
        bool ok;
        int value;
    } table[] = {{"1003", true, 1003},     {"-1", true, -1},    {"0x10", true, 16},
                 {"2147483648", false, 0}, {"1003 ", false, 0}, {"", false, 0}};
    for (const auto& row : table) {
        const TiXmlText node(row.text);
        Code value = Known;
        EXPECT_EQ(expected(row.text, row.ok), CodeText::fromXml(&node, value).format()) << row.text;
        if (row.ok) {
            EXPECT_EQ(row.value, static_cast<int>(value)) << row.text;
        }
    }
}

TEST(Number, OnlyATextNodeCarriesANumber)
{
    const TiXmlComment comment("12");
    unsigned long long value = 0;
    EXPECT_EQ("Unexpected node type (Code 70): Expected an xml text node",
              UnsignedText::fromXml(&comment, value).format());
    EXPECT_EQ("Unexpected node type (Code 70): Expected an xml text node",
              UnsignedText::fromXml(nullptr, value).format());
}

} // namespace
