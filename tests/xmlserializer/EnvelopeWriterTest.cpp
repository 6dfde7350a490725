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

struct Refused
{
};

// No real request can fail to write its payload, so this one is made to.
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

TEST(EnvelopeWriter, PayloadFailureLeavesNoOutput)
{
    const XmlSerializer<TypeList<RefusedTrait, velmo::utilities::detail::TypeNull>> serializer("ROOT", "2.7");
    std::string xml = "previous";
    EXPECT_EQ("Conversion failed (Code 71): Unable to convert \"payload\" to string. (While serializing "
              "\"Refused\")",
              serializer.serialize(Refused(), xml).format());
    EXPECT_EQ("", xml);
}

} // namespace
