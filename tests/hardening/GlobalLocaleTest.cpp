#include "CannedEngine.h"
#include "EngineMessages.h"
#include "StderrCapture.h"
#include "Timestamps.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <gtest/gtest.h>

#include <locale>
#include <string>

using namespace akvo::test;
using velmo::kvo::lipsyncapi::Service;

namespace {

// Groups digits by three with "." as many locales do; made here so that no
// system locale is needed.
class GroupingByThree : public std::numpunct<char>
{
protected:
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

// The application may make any locale global; the texts, the log line and
// the numbers read from the engine stay plain digits.
class UnderAGroupingGlobalLocale : public ::testing::Test
{
protected:
    UnderAGroupingGlobalLocale()
        : _previous(std::locale::global(std::locale(std::locale::classic(), new GroupingByThree)))
    {
    }
    ~UnderAGroupingGlobalLocale() override { std::locale::global(_previous); }

private:
    std::locale _previous;
};

std::string answerFrame(const std::string& code, const std::string& capture)
{
    return framed(getAudioTsAnswer(code, "<Message/>", {capture, "2", "3", "4"}));
}

// Through the general path too: a blank before the timestamps makes the
// answer one the engine never prints.
std::string generalPathFrame(const std::string& code, const std::string& capture)
{
    std::string frame = answerFrame(code, capture);
    return frame.insert(frame.find("<LipSyncNtpTimestamps>"), " ");
}

std::string callOnce(const std::string& frame, LipSyncNtpTimestamps& timestamps, std::string& logged)
{
    CannedEngine engine(frame);
    StderrCapture capture;
    std::string result;
    {
        Service service;
        service.connect(engine.socketPath());
        result = service.getAudioTimestamps(timestamps).format();
    }
    logged = capture.text();
    return result;
}

TEST_F(UnderAGroupingGlobalLocale, ResultTextsAndLogLinesHavePlainDigits)
{
    for (const std::string& frame :
         {answerFrame("1000", "16045690984833536"), generalPathFrame("1000", "16045690984833536")}) {
        LipSyncNtpTimestamps timestamps = untouchedTimestamps;
        std::string logged;
        EXPECT_EQ("Success", callOnce(frame, timestamps, logged));
        EXPECT_TRUE(sameTimestamps({16045690984833536ULL, 2, 3, 4}, timestamps));
        EXPECT_NE(std::string::npos, logged.find("audioCaptureTimestamp=16045690984833536 ")) << logged;
    }
    for (const std::string& frame : {answerFrame("1003", "1"), generalPathFrame("1003", "1")}) {
        LipSyncNtpTimestamps timestamps = untouchedTimestamps;
        std::string logged;
        EXPECT_EQ("The AKVO is not performing a call (Code 1007): {Bad state (Code 1003)}",
                  callOnce(frame, timestamps, logged));
    }
}

TEST_F(UnderAGroupingGlobalLocale, GroupedNumbersInAnAnswerAreRefused)
{
    const std::string conversion =
        "An error has occured in the transport layer (Code 1005): {Serializer error "
        "(Code 5903): {Conversion failed (Code 71): Unable to convert from string \"";
    const std::string inResult =
        "\". (While desserializing \"ErrorCode\") (While desserializing \"Result\") (While "
        "desserializing \"GetAudioTs_Answer\")}}";
    const std::string inTimestamps =
        "\". (While desserializing \"capture_timestamp\") (While desserializing "
        "\"LipSyncNtpTimestamps\") (While desserializing \"GetAudioTs_Answer\")}}";
    for (const bool general : {false, true}) {
        const auto frame = general ? generalPathFrame : answerFrame;
        LipSyncNtpTimestamps timestamps = untouchedTimestamps;
        std::string logged;
        EXPECT_EQ(conversion + "1.000" + inResult, callOnce(frame("1.000", "1"), timestamps, logged));
        EXPECT_EQ(conversion + "16.045.690.984.833.536" + inTimestamps,
                  callOnce(frame("1000", "16.045.690.984.833.536"), timestamps, logged));
        EXPECT_TRUE(sameTimestamps(untouchedTimestamps, timestamps));
    }
}

} // namespace
