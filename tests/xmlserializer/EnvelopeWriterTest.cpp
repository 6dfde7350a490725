#include "velmo/utilities/TypeList.h"
#include "velmo/utilities/xmlserializer/XmlResult.h"
#include "velmo/utilities/xmlserializer/XmlSerializer.h"

#include <gtest/gtest.h>

#include <string>
#include <tinyxml.h>

namespace {

using velmo::utilities::TypeListOf;
using velmo::utilities::xmlserializer::ConversionFailed;
using velmo::utilities::xmlserializer::XmlResult;
using velmo::utilities::xmlserializer::XmlSerializer;

struct Refused
{
};

// No real request can fail to write its payload, so this one is made to.
struct RefusedTrait
{
    using Record = Refused;
    static constexpr const char* tag = "Refused";

    static XmlResult writePayload(const Refused&, TiXmlNode*& payload)
    {
        payload = nullptr;
        return XmlResult(ConversionFailed) << "Unable to convert \"payload\" to string.";
    }
};

TEST(EnvelopeWriter, PayloadFailureLeavesNoOutput)
{
    const XmlSerializer<TypeListOf<RefusedTrait>> serializer("ROOT", "2.7");
    std::string xml = "previous";
    EXPECT_EQ("Conversion failed (Code 71): Unable to convert \"payload\" to string. (While serializing "
              "\"Refused\")",
              serializer.serialize(Refused(), xml).format());
    EXPECT_EQ("", xml);
}

} // namespace
