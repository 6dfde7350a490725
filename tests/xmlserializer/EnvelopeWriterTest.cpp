#include "velmo/utilities/TypeList.h"
#include "velmo/utilities/xmlserializer/XmlResult.h"
#include "velmo/utilities/xmlserializer/XmlSerializer.h"

#include <gtest/gtest.h>

#include <string>
#include <tinyxml.h>

namespace {

using velmo::utilities::TypeList;
using velmo::utilities::xmlserializer::ConversionFailed;
using velmo::utilities::xmlserializer::XmlResult;
using velmo::utilities::xmlserializer::XmlSerializer;

struct Ping
{
    std::string text;
};

struct Refused
{
};

struct PingTrait
{
    typedef Ping Record;
    static constexpr const char* tag = "Ping";

    static XmlResult writePayload(const Ping& ping, TiXmlNode*& payload)
    {
        payload = new TiXmlText(ping.text);
        return XmlResult::success();
    }
};

struct RefusedTrait
{
    typedef Refused Record;
    static constexpr const char* tag = "Refused";

    static XmlResult writePayload(const Refused&, TiXmlNode*& payload)
    {
        payload = NULL;
        return XmlResult(ConversionFailed) << "Unable to convert \"payload\" to string.";
    }
};

typedef XmlSerializer<TypeList<PingTrait, TypeList<RefusedTrait, velmo::utilities::detail::TypeNull>>>
    TestSerializer;

TEST(EnvelopeWriter, UsesTheGivenRootAndVersion)
{
    const TestSerializer serializer("ROOT", "2.7");
    std::string xml = "previous";
    EXPECT_EQ("Success", serializer.serialize(Ping{"a<b"}, xml).format());
    EXPECT_EQ("<?xml version=\"1.0\" ?><ROOT version=\"2.7\"><Ping>a&lt;b</Ping></ROOT>", xml);
}

TEST(EnvelopeWriter, PayloadFailureLeavesNoOutput)
{
    const TestSerializer serializer("ROOT", "2.7");
    std::string xml = "previous";
    EXPECT_EQ("Conversion failed (Code 71): Unable to convert \"payload\" to string. (While serializing "
              "\"Refused\")",
              serializer.serialize(Refused(), xml).format());
    EXPECT_EQ("", xml);
}

} // namespace
