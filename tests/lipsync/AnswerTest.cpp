#include "EngineMessages.h"
#include "Timestamps.h"
#include "velmo/kvo/lipsync/GetAudioTs.h"
#include "velmo/kvo/lipsync/LipSyncSerializer.h"
#include "velmo/kvo/lipsync/SetAudioDelay.h"
#include "velmo/utilities/xmlserializer/NestingBound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>

namespace {

using namespace akvo::test;
using velmo::kvo::lipsync::GetAudioTs;
using velmo::kvo::lipsync::LipSyncXmlSerializer;
using velmo::kvo::lipsync::SetAudioDelay;

const std::string goodTimestamps = timestampsElement(fixedTimestampTexts);

const std::string inAnswer = " (While desserializing \"GetAudioTs_Answer\")";
const std::string inTimestamps = " (While desserializing \"LipSyncNtpTimestamps\")";

std::string command(const std::string& children)
{
    return "<GetAudioTs_Answer>" + children + "</GetAudioTs_Answer>";
}

std::string document(const std::string& children)
{
    return envelope + command(children) + "</AKVO>";
}

const std::string goodCommand = command(resultElement("1000", "<Message/>") + goodTimestamps);

std::string timestampsWith(const std::string& capture, const std::string& depthElement)
{
    return "<LipSyncNtpTimestamps><capture_timestamp>" + capture +
           "</capture_timestamp><rendering_timestamp>12</rendering_timestamp>"
           "<receiving_timestamp>13</receiving_timestamp>" +
           depthElement + "</LipSyncNtpTimestamps>" + resultElement("1000", "<Message/>");
}

TEST(GetAudioTsAnswer, ChildrenInAnyOrderAndExtraChildrenIgnored)
{
    GetAudioTs::Answer answer;
    const auto result = LipSyncXmlSerializer().deserialize(
        document(
            "\n  <Extra>1</Extra>\n  <LipSyncNtpTimestamps>\n"
            "    <jitter_buffer_depth>0x28</jitter_buffer_depth><unknown/>\n"
            "    <receiving_timestamp>30</receiving_timestamp><rendering_timestamp>20</rendering_timestamp>\n"
            "    <capture_timestamp><!-- ntp -->10</capture_timestamp>\n"
            "    <capture_timestamp>9</capture_timestamp>\n"
            "  </LipSyncNtpTimestamps>\n"
            "  <Result><Message>fine</Message><Note/><ErrorCode>1000</ErrorCode></Result>\n"),
        answer);
    EXPECT_EQ("Success", result.format());
    // A success still carries the suffixes of the last child read and of the answer; format() hides them.
    EXPECT_EQ(" (While desserializing \"Result\")" + inAnswer, result.getMainMessage());
    EXPECT_TRUE(sameTimestamps({10, 20, 30, 40}, answer.timestamps));
    EXPECT_TRUE(answer.result.isSuccess());
}

struct Case
{
    const char* name;
    std::string xml;
    std::string formatted;
};

void PrintTo(const Case& c, std::ostream* os)
{
    *os << c.name;
}

std::string caseName(const ::testing::TestParamInfo<Case>& info)
{
    return info.param.name;
}

class Rejected : public ::testing::TestWithParam<Case>
{
};

// No document here carries the preset timestamps, so any write to them shows.
TEST_P(Rejected, LeavesTheAnswerUntouched)
{
    GetAudioTs::Answer answer;
    answer.timestamps = untouchedTimestamps;
    EXPECT_EQ(GetParam().formatted, LipSyncXmlSerializer().deserialize(GetParam().xml, answer).format());
    EXPECT_TRUE(sameTimestamps(untouchedTimestamps, answer.timestamps));
    EXPECT_EQ("Unknown error (Code 1001)", answer.result.format());
}

const std::string noRoot = "Conversion failed (Code 71): No 'AKVO' root element found in xml data.";
const std::string noContent = "Conversion failed (Code 71): No content under root element.";

INSTANTIATE_TEST_SUITE_P(
    Envelope, Rejected,
    ::testing::Values(Case{"NotXml", "Bad state, not in call", noRoot},
                      Case{"WrongRoot", "<akvo version=\"0.1.0\">" + goodCommand + "</akvo>", noRoot},
                      Case{"MissingVersion", "<AKVO>" + goodCommand + "</AKVO>",
                           "Conversion failed (Code 71): No version found in root node 'AKVO"},
                      Case{
                          "OtherVersion", "<AKVO version=\"0.1.1\">" + goodCommand + "</AKVO>",
                          "Conversion failed (Code 71): Version does not match; expect '0.1.0' got '0.1.1'."},
                      Case{"VersionPrefix", "<AKVO version=\"0.1\">" + goodCommand + "</AKVO>",
                           "Conversion failed (Code 71): Version does not match; expect '0.1.0' got '0.1'."},
                      Case{"TwoTopLevelElements", envelope + goodCommand + "</AKVO><AKVO version=\"0.1.0\"/>",
                           "Conversion failed (Code 71): No command tag found."},
                      Case{"RootWithoutChild", envelope + "</AKVO>", noContent},
                      Case{"RootWithTextOnly", envelope + "1000</AKVO>", noContent},
                      Case{"WrongCommandElement",
                           envelope + "<SetAudioDelay_Answer>" + resultElement("1000", "<Message/>") +
                               "</SetAudioDelay_Answer>" + goodCommand + "</AKVO>",
                           "Wrong XML node (Code 68): Trying to deserialize the wrong element.Found "
                           "\"SetAudioDelay_Answer\" "
                           "expected GetAudioTs_Answer"}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Answer, Rejected,
    ::testing::Values(
        Case{"MissingTimestamps", document(resultElement("1000", "<Message/>")),
             "Child not found (Code 69): No element node \"LipSyncNtpTimestamps\" found in node "
             "\"GetAudioTs_Answer\"" +
                 inAnswer},
        Case{"BadCapture",
             document(timestampsWith("-16045690984833536", "<jitter_buffer_depth>14</jitter_buffer_depth>")),
             "Conversion failed (Code 71): Unable to convert from string \"-16045690984833536\". (While "
             "desserializing \"capture_timestamp\")" +
                 inTimestamps + inAnswer},
        Case{"CommentOnlyCapture",
             document(timestampsWith("<!-- 11 -->", "<jitter_buffer_depth>14</jitter_buffer_depth>")),
             "Child not found (Code 69): Node \"capture_timestamp\" does not contain an expected text node "
             "child (While desserializing \"capture_timestamp\")" +
                 inTimestamps + inAnswer},
        // The first three are read before the depth is found missing.
        Case{"MissingDepth", document(timestampsWith("11", "")),
             "Child not found (Code 69): No element node \"jitter_buffer_depth\" found in node "
             "\"LipSyncNtpTimestamps\"" +
                 inTimestamps + inAnswer}),
    caseName);

std::string repeated(const std::string& piece, int times)
{
    std::string text;
    for (int i = 0; i < times; ++i) {
        text += piece;
    }
    return text;
}

const std::string goodChildren = resultElement("1000", "<Message/>") + goodTimestamps;

// Wherever the "<" bytes stand, even where the parser never looks, their
// count alone decides whether the answer is parsed.
TEST(GetAudioTsAnswer, UpToTheBoundOfOpeningBracketsIsRead)
{
    const int most = static_cast<int>(velmo::utilities::xmlserializer::mostOpeningBrackets);
    const int good = 20;
    const int levels = (most - good) / 2;
    const std::string extra = repeated("<", most - good - 1);
    for (const std::string& within :
         {document(repeated("<n>", levels) + repeated("</n>", levels) + goodChildren),
          document("<!--" + extra + "-->" + goodChildren), document("<n a='" + extra + "'/>" + goodChildren),
          document(goodChildren) + std::string(1, '\0') + extra + "<"}) {
        ASSERT_EQ(most, std::count(within.begin(), within.end(), '<'));
        GetAudioTs::Answer answer;
        EXPECT_EQ("Success", LipSyncXmlSerializer().deserialize(within, answer).format())
            << within.substr(0, 80);
        EXPECT_TRUE(sameTimestamps(fixedTimestamps, answer.timestamps));
        EXPECT_EQ(noRoot, LipSyncXmlSerializer().deserialize(within + "<", answer).format());
    }
}

struct ResultCase
{
    const char* name;
    std::string result;
    std::string formatted;
    std::string server;
};

void PrintTo(const ResultCase& c, std::ostream* os)
{
    *os << c.name;
}

class ServerResult : public ::testing::TestWithParam<ResultCase>
{
};

// The timestamps come first, so they are stored whatever the Result gives.
TEST_P(ServerResult, IsReadAfterTheTimestamps)
{
    GetAudioTs::Answer answer;
    EXPECT_EQ(
        GetParam().formatted,
        LipSyncXmlSerializer().deserialize(document(goodTimestamps + GetParam().result), answer).format());
    EXPECT_EQ(GetParam().server, answer.result.format());
    EXPECT_TRUE(sameTimestamps(fixedTimestamps, answer.timestamps));
}

INSTANTIATE_TEST_SUITE_P(
    Documents, ServerResult,
    ::testing::Values(
        ResultCase{"Refused", resultElement("1003", "<Message>not in call</Message>"), "Success",
                   "Bad state (Code 1003): not in call"},
        ResultCase{"NegativeCode", resultElement("-5", "<Message/>"), "Success",
                   "Invalid error (Unreachable) (Code -5)"},
        ResultCase{"EmptyMessage", resultElement("1002", "<Message/>"), "Success",
                   "Invalid parameter (Code 1002)"},
        ResultCase{"OpenCloseMessage", resultElement("1003", "<Message></Message>"), "Success",
                   "Bad state (Code 1003)"},
        ResultCase{"CommentOnlyMessage", resultElement("1003", "<Message><!-- none --></Message>"), "Success",
                   "Bad state (Code 1003)"},
        ResultCase{"MissingMessage", resultElement("1003", ""),
                   "Child not found (Code 69): No element node \"Message\" found in node \"Result\" (While "
                   "desserializing \"Result\")" +
                       inAnswer,
                   "Unknown error (Code 1001)"},
        ResultCase{
            "MissingResult", "",
            "Child not found (Code 69): No element node \"Result\" found in node \"GetAudioTs_Answer\"" +
                inAnswer,
            "Unknown error (Code 1001)"}),
    [](const ::testing::TestParamInfo<ResultCase>& info) { return std::string(info.param.name); });

// Found by fuzzing: the parser took a trailing UTF-8 lead byte for a whole
// character and read on past the end of the answer. What lies beyond the
// text, here a well-formed Result, must stay unread.
TEST(SetAudioDelayAnswer, NothingBeyondAnAnswerCutInsideACharacterIsRead)
{
    const std::string cut = envelope + "<SetAudioDelay_Answer>1\xcd";
    std::string xml = cut + '\0' + resultElement("1000", "<Message/>") + "</SetAudioDelay_Answer></AKVO>";
    xml.resize(cut.size());
    SetAudioDelay::Answer answer;
    EXPECT_EQ("Child not found (Code 69): No element node \"Result\" found in node \"SetAudioDelay_Answer\" "
              "(While desserializing \"SetAudioDelay_Answer\")",
              LipSyncXmlSerializer().deserialize(xml, answer).format());
}

} // namespace
