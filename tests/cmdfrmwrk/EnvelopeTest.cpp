#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/utilities/xmlserializer/XmlResult.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using velmo::kvo::lipsync::GetAudioTs;
using velmo::kvo::lipsync::LipSyncXmlSerializer;
using velmo::utilities::xmlserializer::ConversionFailed;
using velmo::utilities::xmlserializer::WrongXmlNode;

const std::string command =
    "<GetAudioTs_Answer><Result><ErrorCode>1000</ErrorCode><Message/></Result>"
    "<LipSyncNtpTimestamps><capture_timestamp>1</capture_timestamp>"
    "<rendering_timestamp>2</rendering_timestamp><receiving_timestamp>3</receiving_timestamp>"
    "<jitter_buffer_depth>4</jitter_buffer_depth></LipSyncNtpTimestamps></GetAudioTs_Answer>";

struct EnvelopeCase
{
    const char* name;
    std::string xml;
    int code;
    std::string message;
};

void PrintTo(const EnvelopeCase& c, std::ostream* os)
{
    *os << c.name;
}

class EnvelopeFailure : public ::testing::TestWithParam<EnvelopeCase>
{
};

TEST_P(EnvelopeFailure, IsReportedWithItsText)
{
    GetAudioTs::Answer answer;
    const auto result = LipSyncXmlSerializer().deserialize(GetParam().xml, answer);
    EXPECT_EQ(GetParam().code, result.getErrorCode());
    EXPECT_EQ(GetParam().message, result.getMainMessage());
    EXPECT_EQ(0u, answer.timestamps.tCap);
}

const std::string noRoot = "No 'AKVO' root element found in xml data.";

INSTANTIATE_TEST_SUITE_P(
    Documents, EnvelopeFailure,
    ::testing::Values(
        EnvelopeCase{"Empty", "", ConversionFailed, noRoot},
        EnvelopeCase{"NotXml", "Bad state, not in call", ConversionFailed, noRoot},
        EnvelopeCase{"WrongRoot", "<?xml version=\"1.0\" ?><akvo version=\"0.1.0\">" + command + "</akvo>",
                     ConversionFailed, noRoot},
        EnvelopeCase{"MissingVersion", "<?xml version=\"1.0\" ?><AKVO>" + command + "</AKVO>",
                     ConversionFailed, "No version found in root node 'AKVO"},
        EnvelopeCase{"OtherVersion", "<?xml version=\"1.0\" ?><AKVO version=\"0.1.1\">" + command + "</AKVO>",
                     ConversionFailed, "Version does not match; expect '0.1.0' got '0.1.1'."},
        EnvelopeCase{"VersionPrefix", "<AKVO version=\"0.1\">" + command + "</AKVO>", ConversionFailed,
                     "Version does not match; expect '0.1.0' got '0.1'."},
        EnvelopeCase{"VersionInOtherAttribute", "<AKVO Version=\"0.1.0\">" + command + "</AKVO>",
                     ConversionFailed, "No version found in root node 'AKVO"},
        EnvelopeCase{"TwoTopLevelElements",
                     "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\">" + command +
                         "</AKVO><AKVO version=\"0.1.0\"/>",
                     ConversionFailed, "No command tag found."},
        EnvelopeCase{"RootWithoutChild", "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"></AKVO>",
                     ConversionFailed, "No content under root element."},
        EnvelopeCase{"RootWithTextOnly", "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\">1000</AKVO>",
                     ConversionFailed, "No content under root element."},
        EnvelopeCase{
            "WrongCommandElement",
            "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><SetAudioDelay_Answer><Result><ErrorCode>1000"
            "</ErrorCode><Message/></Result></SetAudioDelay_Answer>" +
                command + "</AKVO>",
            WrongXmlNode,
            "Trying to deserialize the wrong element.Found \"SetAudioDelay_Answer\" expected "
            "GetAudioTs_Answer"}),
    [](const ::testing::TestParamInfo<EnvelopeCase>& info) { return std::string(info.param.name); });

TEST(Envelope, FailureFormatsWithItsCode)
{
    GetAudioTs::Answer answer;
    EXPECT_EQ("Conversion failed (Code 71): No version found in root node 'AKVO",
              LipSyncXmlSerializer().deserialize("<AKVO><x/></AKVO>", answer).format());
}

TEST(Envelope, OnlyTheFirstCommandElementIsRead)
{
    GetAudioTs::Answer answer;
    const std::string xml = "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\">" + command +
                            "<GetAudioTs_Answer><Result><ErrorCode>1003</ErrorCode><Message/></Result>"
                            "</GetAudioTs_Answer></AKVO>";
    EXPECT_EQ("Success", LipSyncXmlSerializer().deserialize(xml, answer).format());
    EXPECT_TRUE(answer.result.isSuccess());
    EXPECT_EQ(4u, answer.timestamps.jbmDepth);
}

TEST(Envelope, DeclarationIsOptional)
{
    GetAudioTs::Answer answer;
    EXPECT_EQ("Success", LipSyncXmlSerializer()
                             .deserialize("<AKVO version=\"0.1.0\">" + command + "</AKVO>", answer)
                             .format());
    EXPECT_EQ(1u, answer.timestamps.tCap);
}

} // namespace
