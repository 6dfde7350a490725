#include "velmo/kvo/cmdfrmwrk/Command.h"
#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using velmo::kvo::cmdfrmwrk::Command;
using velmo::kvo::lipsync::GetAudioTs;
using velmo::kvo::lipsync::LipSyncXmlSerializer;
using velmo::kvo::lipsync::SetAudioDelay;

const std::string head = "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\">";
const std::string tail = "</AKVO>";
const std::string goodTimestamps =
    "<LipSyncNtpTimestamps><capture_timestamp>16045690984833536</capture_timestamp>"
    "<rendering_timestamp>16045690985263104</rendering_timestamp>"
    "<receiving_timestamp>16045690984404992</receiving_timestamp>"
    "<jitter_buffer_depth>40</jitter_buffer_depth></LipSyncNtpTimestamps>";

std::string getAudioTsAnswer(const std::string& children)
{
    return head + "<GetAudioTs_Answer>" + children + "</GetAudioTs_Answer>" + tail;
}

std::string resultElement(const std::string& code, const std::string& message)
{
    return "<Result><ErrorCode>" + code + "</ErrorCode>" + message + "</Result>";
}

// An answer as a caller hands it over, with timestamps that no document
// below carries, so that a write to them shows.
GetAudioTs::Answer presetAnswer()
{
    GetAudioTs::Answer answer;
    answer.timestamps = {1, 2, 3, 4};
    return answer;
}

void expectTimestamps(const GetAudioTs::Answer& answer, unsigned long long tCap, unsigned long long tRdr,
                      unsigned long long tRcv, unsigned long long jbmDepth)
{
    EXPECT_EQ(tCap, answer.timestamps.tCap);
    EXPECT_EQ(tRdr, answer.timestamps.tRdr);
    EXPECT_EQ(tRcv, answer.timestamps.tRcv);
    EXPECT_EQ(jbmDepth, answer.timestamps.jbmDepth);
}

TEST(GetAudioTsAnswer, StartsZeroedWithAnUnknownServerResult)
{
    const GetAudioTs::Answer answer;
    expectTimestamps(answer, 0, 0, 0, 0);
    EXPECT_EQ("Unknown error (Code 1001)", answer.result.format());
}

TEST(GetAudioTsAnswer, ReadsTheFourNumbersAndTheServerResult)
{
    GetAudioTs::Answer answer = presetAnswer();
    const std::string xml = getAudioTsAnswer(resultElement("1000", "<Message></Message>") + goodTimestamps);
    EXPECT_EQ("Success", LipSyncXmlSerializer().deserialize(xml, answer).format());
    expectTimestamps(answer, 16045690984833536ULL, 16045690985263104ULL, 16045690984404992ULL, 40);
    EXPECT_TRUE(answer.result.isSuccess());
}

TEST(GetAudioTsAnswer, ChildrenInAnyOrderAndExtraChildrenIgnored)
{
    GetAudioTs::Answer answer = presetAnswer();
    const std::string xml = getAudioTsAnswer(
        "<Extra>1</Extra><LipSyncNtpTimestamps><jitter_buffer_depth>0x28</jitter_buffer_depth><unknown/>"
        "<receiving_timestamp>30</receiving_timestamp><rendering_timestamp>20</rendering_timestamp>"
        "<capture_timestamp>10</capture_timestamp></LipSyncNtpTimestamps>"
        "<Result><Message>fine</Message><Note/><ErrorCode>1000</ErrorCode></Result>");
    EXPECT_EQ("Success", LipSyncXmlSerializer().deserialize(xml, answer).format());
    expectTimestamps(answer, 10, 20, 30, 40);
    EXPECT_TRUE(answer.result.isSuccess());
}

TEST(GetAudioTsAnswer, WhiteSpaceBetweenElementsIsIgnored)
{
    GetAudioTs::Answer answer = presetAnswer();
    const std::string xml =
        "<?xml version=\"1.0\" ?>\n<AKVO version=\"0.1.0\">\n  <GetAudioTs_Answer>\n"
        "    <Result>\n      <ErrorCode>1000</ErrorCode>\n      <Message/>\n    </Result>\n"
        "    <LipSyncNtpTimestamps>\n      <capture_timestamp>5</capture_timestamp>\n"
        "      <rendering_timestamp>6</rendering_timestamp>\n"
        "      <receiving_timestamp>7</receiving_timestamp>\n"
        "      <jitter_buffer_depth>8</jitter_buffer_depth>\n    </LipSyncNtpTimestamps>\n"
        "  </GetAudioTs_Answer>\n</AKVO>\n";
    EXPECT_EQ("Success", LipSyncXmlSerializer().deserialize(xml, answer).format());
    expectTimestamps(answer, 5, 6, 7, 8);
}

struct FailureCase
{
    const char* name;
    std::string children;
    std::string formatted;
};

void PrintTo(const FailureCase& c, std::ostream* os)
{
    *os << c.name;
}

class GetAudioTsAnswerFailure : public ::testing::TestWithParam<FailureCase>
{
};

TEST_P(GetAudioTsAnswerFailure, LeavesTheAnswerUntouched)
{
    GetAudioTs::Answer answer = presetAnswer();
    EXPECT_EQ(GetParam().formatted,
              LipSyncXmlSerializer().deserialize(getAudioTsAnswer(GetParam().children), answer).format());
    expectTimestamps(answer, 1, 2, 3, 4);
    EXPECT_EQ("Unknown error (Code 1001)", answer.result.format());
}

const std::string answerSuffix = " (While desserializing \"GetAudioTs_Answer\")";
const std::string timestampsSuffix = " (While desserializing \"LipSyncNtpTimestamps\")";

INSTANTIATE_TEST_SUITE_P(
    Documents, GetAudioTsAnswerFailure,
    ::testing::Values(
        FailureCase{"MissingTimestamps", resultElement("1000", "<Message/>"),
                    "Child not found (Code 69): No element node \"LipSyncNtpTimestamps\" found in node "
                    "\"GetAudioTs_Answer\"" +
                        answerSuffix},
        FailureCase{
            "MissingDepth",
            "<LipSyncNtpTimestamps><capture_timestamp>1</capture_timestamp><rendering_timestamp>2"
            "</rendering_timestamp><receiving_timestamp>3</receiving_timestamp></LipSyncNtpTimestamps>",
            "Child not found (Code 69): No element node \"jitter_buffer_depth\" found in node "
            "\"LipSyncNtpTimestamps\"" +
                timestampsSuffix + answerSuffix},
        FailureCase{
            "BadCapture",
            "<LipSyncNtpTimestamps><capture_timestamp>-16045690984833536</capture_timestamp>"
            "<rendering_timestamp>2</rendering_timestamp><receiving_timestamp>3</receiving_timestamp>"
            "<jitter_buffer_depth>4</jitter_buffer_depth></LipSyncNtpTimestamps>" +
                resultElement("1000", "<Message/>"),
            "Conversion failed (Code 71): Unable to convert from string \"-16045690984833536\". (While "
            "desserializing \"capture_timestamp\")" +
                timestampsSuffix + answerSuffix},
        FailureCase{
            "BadDepthAfterGoodTimestamps",
            "<LipSyncNtpTimestamps><capture_timestamp>11</capture_timestamp>"
            "<rendering_timestamp>12</rendering_timestamp><receiving_timestamp>13</receiving_timestamp>"
            "<jitter_buffer_depth>4 0</jitter_buffer_depth></LipSyncNtpTimestamps>",
            "Conversion failed (Code 71): Unable to convert from string \"4 0\". (While desserializing "
            "\"jitter_buffer_depth\")" +
                timestampsSuffix + answerSuffix},
        FailureCase{
            "CommentOnlyTimestamp",
            "<LipSyncNtpTimestamps><capture_timestamp><!-- 1 --></capture_timestamp>"
            "<rendering_timestamp>2</rendering_timestamp><receiving_timestamp>3</receiving_timestamp>"
            "<jitter_buffer_depth>4</jitter_buffer_depth></LipSyncNtpTimestamps>",
            "Child not found (Code 69): Node \"capture_timestamp\" does not contain an expected text node "
            "child (While desserializing \"capture_timestamp\")" +
                timestampsSuffix + answerSuffix}),
    [](const ::testing::TestParamInfo<FailureCase>& info) { return std::string(info.param.name); });

TEST(GetAudioTsAnswer, TimestampsAreStoredEvenWhenTheResultIsMissing)
{
    GetAudioTs::Answer answer = presetAnswer();
    EXPECT_EQ("Child not found (Code 69): No element node \"Result\" found in node \"GetAudioTs_Answer\"" +
                  answerSuffix,
              LipSyncXmlSerializer().deserialize(getAudioTsAnswer(goodTimestamps), answer).format());
    expectTimestamps(answer, 16045690984833536ULL, 16045690985263104ULL, 16045690984404992ULL, 40);
    EXPECT_EQ("Unknown error (Code 1001)", answer.result.format());
}

const std::string resultSuffix = " (While desserializing \"Result\")";

struct ResultCase
{
    const char* name;
    std::string result;
    std::string readFormatted;
    std::string serverFormatted;
};

void PrintTo(const ResultCase& c, std::ostream* os)
{
    *os << c.name;
}

class ServerResult : public ::testing::TestWithParam<ResultCase>
{
};

// Timestamps come first, so they are stored whatever the Result gives.
TEST_P(ServerResult, IsReadFromTheResultElement)
{
    GetAudioTs::Answer answer = presetAnswer();
    EXPECT_EQ(GetParam().readFormatted,
              LipSyncXmlSerializer()
                  .deserialize(getAudioTsAnswer(goodTimestamps + GetParam().result), answer)
                  .format());
    EXPECT_EQ(GetParam().serverFormatted, answer.result.format());
    EXPECT_EQ(40u, answer.timestamps.jbmDepth);
}

INSTANTIATE_TEST_SUITE_P(
    Documents, ServerResult,
    ::testing::Values(
        ResultCase{"Refused", resultElement("1003", "<Message>not in call</Message>"), "Success",
                   "Bad state (Code 1003): not in call"},
        ResultCase{"InvalidParameter", resultElement("1002", "<Message>too long</Message>"), "Success",
                   "Invalid parameter (Code 1002): too long"},
        ResultCase{"NegativeCode", resultElement("-5", "<Message/>"), "Success",
                   "Invalid error (Unreachable) (Code -5)"},
        ResultCase{"EmptyMessage", resultElement("1003", "<Message/>"), "Success", "Bad state (Code 1003)"},
        ResultCase{"OpenCloseMessage", resultElement("1003", "<Message></Message>"), "Success",
                   "Bad state (Code 1003)"},
        ResultCase{"CommentOnlyMessage", resultElement("1003", "<Message><!-- none --></Message>"), "Success",
                   "Bad state (Code 1003)"},
        ResultCase{"MissingMessage", resultElement("1003", ""),
                   "Child not found (Code 69): No element node \"Message\" found in node \"Result\"" +
                       resultSuffix + answerSuffix,
                   "Unknown error (Code 1001)"},
        ResultCase{
            "CommentOnlyErrorCode", "<Result><ErrorCode><!-- 1000 --></ErrorCode><Message/></Result>",
            "Child not found (Code 69): Node \"ErrorCode\" does not contain an expected text node child "
            "(While desserializing \"ErrorCode\")" +
                resultSuffix + answerSuffix,
            "Unknown error (Code 1001)"},
        ResultCase{"MissingErrorCode", "<Result><Message>x</Message></Result>",
                   "Child not found (Code 69): No element node \"ErrorCode\" found in node \"Result\"" +
                       resultSuffix + answerSuffix,
                   "Unknown error (Code 1001)"},
        ResultCase{"HexadecimalErrorCode", resultElement("0x3eb", "<Message/>"), "Success",
                   "Bad state (Code 1003)"}),
    [](const ::testing::TestParamInfo<ResultCase>& info) { return std::string(info.param.name); });

TEST(ServerResult, MainMessageIsTheServerText)
{
    GetAudioTs::Answer answer;
    LipSyncXmlSerializer().deserialize(
        getAudioTsAnswer(goodTimestamps + resultElement("1003", "<Message>not in call</Message>")), answer);
    EXPECT_EQ(Command::BadState, answer.result.getErrorCode());
    EXPECT_EQ("not in call", answer.result.getMainMessage());
}

std::string setAudioDelayAnswer(const std::string& children)
{
    return head + "<SetAudioDelay_Answer>" + children + "</SetAudioDelay_Answer>" + tail;
}

TEST(SetAudioDelayAnswer, ReadsTheServerResult)
{
    SetAudioDelay::Answer answer;
    EXPECT_EQ("Success", LipSyncXmlSerializer()
                             .deserialize(setAudioDelayAnswer(resultElement("1000", "<Message/>")), answer)
                             .format());
    EXPECT_TRUE(answer.result.isSuccess());

    EXPECT_EQ("Success",
              LipSyncXmlSerializer()
                  .deserialize(setAudioDelayAnswer("<Extra/>" +
                                                   resultElement("1003", "<Message>not in call</Message>")),
                               answer)
                  .format());
    EXPECT_EQ("Bad state (Code 1003): not in call", answer.result.format());
}

TEST(SetAudioDelayAnswer, MissingResultKeepsTheUnknownServerResult)
{
    SetAudioDelay::Answer answer;
    EXPECT_EQ(
        "Child not found (Code 69): No element node \"Result\" found in node \"SetAudioDelay_Answer\" (While "
        "desserializing \"SetAudioDelay_Answer\")",
        LipSyncXmlSerializer().deserialize(setAudioDelayAnswer("<result/>"), answer).format());
    EXPECT_EQ("Unknown error (Code 1001)", answer.result.format());
}

TEST(SetAudioDelayAnswer, BadErrorCodeNamesEveryEnclosingElement)
{
    SetAudioDelay::Answer answer;
    EXPECT_EQ(
        "Conversion failed (Code 71): Unable to convert from string \"OK\". (While desserializing "
        "\"ErrorCode\") (While desserializing \"Result\") (While desserializing \"SetAudioDelay_Answer\")",
        LipSyncXmlSerializer()
            .deserialize(setAudioDelayAnswer(resultElement("OK", "<Message/>")), answer)
            .format());
    EXPECT_EQ("Unknown error (Code 1001)", answer.result.format());
}

} // namespace
