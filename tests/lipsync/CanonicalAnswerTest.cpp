#include "CanonicalDifferential.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace akvo::test;

const std::string head = "<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\">";

std::string resultElement(const std::string& code, const std::string& message)
{
    return "<Result><ErrorCode>" + code + "</ErrorCode>" + message + "</Result>";
}

std::string getAnswer(const std::string& code, const std::string& message, const std::vector<std::string>& t)
{
    return head + "<GetAudioTs_Answer>" + resultElement(code, message) +
           "<LipSyncNtpTimestamps><capture_timestamp>" + t[0] + "</capture_timestamp><rendering_timestamp>" +
           t[1] + "</rendering_timestamp><receiving_timestamp>" + t[2] +
           "</receiving_timestamp><jitter_buffer_depth>" + t[3] +
           "</jitter_buffer_depth></LipSyncNtpTimestamps></GetAudioTs_Answer></AKVO>";
}

std::string setAnswer(const std::string& code, const std::string& message)
{
    return head + "<SetAudioDelay_Answer>" + resultElement(code, message) + "</SetAudioDelay_Answer></AKVO>";
}

const std::vector<std::string> someTimestamps = {"16045690984833536", "16045690985263104",
                                                 "16045690984404992", "40"};

struct Boundary
{
    std::string code;
    std::string message;
    std::string timestamp;
    bool canonical;
};

// Each value stands in the code, the message and the first and last
// timestamp of a GetAudioTs answer, and in a SetAudioDelay answer.
const Boundary boundaries[] = {
    {"1000", "<Message></Message>", "0", true},
    {"1003", "<Message>not in call</Message>", "18446744073709551615", true},
    {"2147483647", "<Message/>", "000000000000000000000018446744073709551615", true},
    {"-2147483648", "<Message />", "00", true},
    {"-0", "<Message>a</Message>", "1", true},
    {"0001000", "<Message>x=\"1\" 'quoted' ]] ?/--</Message>", "4294967296", true},
    {"2147483648", "<Message>a  b</Message>", "18446744073709551616", false},
    {"-2147483649", "<Message> a</Message>", "99999999999999999999", false},
    {"0x3E8", "<Message>a </Message>", "0x10", false},
    {"+1000", "<Message>&amp;</Message>", "+1", false},
    {"", "<Message>a&#32;b</Message>", "", false},
    {"1.000", "<Message>caf\xc3\xa9</Message>", "16.045.690.984.833.536", false},
    {" 1000", "<Message>tab\tin</Message>", " 1", false},
    {"1000 ", "<Message>line\nfeed</Message>", "1 ", false},
    {"-", "<Message><!-- c --></Message>", "-1", false},
    {"10-00", "<Message><![CDATA[c]]></Message>", "1e3", false},
    {"1000", "", "1", false},
    {"1000", "<Message>a</Message><Message>b</Message>", "1", false},
};

TEST(CanonicalAnswer, BoundaryValuesReadAsTheGeneralPathReadsThem)
{
    for (const Boundary& b : boundaries) {
        const std::string get = getAnswer(b.code, b.message, {b.timestamp, "2", "3", b.timestamp});
        const std::string set = setAnswer(b.code, b.message);
        for (const std::string& xml : {get, set}) {
            const CanonicalRead read =
                xml == get ? readBothWays<GetAudioTs::Answer>(xml) : readBothWays<SetAudioDelay::Answer>(xml);
            EXPECT_EQ("", read.disagreement) << xml;
            if (b.canonical) {
                EXPECT_TRUE(read.accepted) << xml;
            }
        }
    }
}

// Layouts more than one byte away from the canonical one (the sweep below
// covers the rest): reordered or extra children, another declaration, a
// second root. All are declined.
TEST(CanonicalAnswer, AnyOtherLayoutIsDeclined)
{
    const std::string result = resultElement("1000", "<Message/>");
    const std::string timestamps = "<LipSyncNtpTimestamps><capture_timestamp>1</capture_timestamp>"
                                   "<rendering_timestamp>2</rendering_timestamp><receiving_timestamp>3"
                                   "</receiving_timestamp><jitter_buffer_depth>4</jitter_buffer_depth>"
                                   "</LipSyncNtpTimestamps>";
    const std::string canonical = getAnswer("1000", "<Message/>", {"1", "2", "3", "4"});
    const std::string others[] = {
        head + "<GetAudioTs_Answer>" + timestamps + result + "</GetAudioTs_Answer></AKVO>",
        head + "<GetAudioTs_Answer>" + result + timestamps + "<Extra/></GetAudioTs_Answer></AKVO>",
        canonical + "<AKVO version=\"0.1.0\"/>",
        std::string(canonical).replace(0, 21, "<?xml version='1.0'?>"),
        canonical.substr(head.find("<AKVO")),
    };
    for (const std::string& xml : others) {
        const CanonicalRead read = readBothWays<GetAudioTs::Answer>(xml);
        EXPECT_FALSE(read.accepted) << xml;
        EXPECT_EQ("", read.disagreement) << xml;
    }
}

std::string randomDigits(std::mt19937_64& random, uint64_t value)
{
    return std::string(random() % 4 == 0 ? random() % 5 : 0, '0') + std::to_string(value);
}

std::string randomMessage(std::mt19937_64& random)
{
    const size_t form = random() % 4;
    if (form < 3) {
        return emptyMessageForms[form];
    }
    std::string text;
    const size_t words = 1 + random() % 4;
    for (size_t word = 0; word < words; ++word) {
        text += word == 0 ? "" : " ";
        for (size_t letter = 0, size = 1 + random() % 8; letter < size; ++letter) {
            char c;
            do {
                c = static_cast<char>('!' + random() % ('~' - '!' + 1));
            } while (c == '<' || c == '>' || c == '&');
            text += c;
        }
    }
    return "<Message>" + text + "</Message>";
}

TEST(CanonicalAnswer, RandomCanonicalAnswersAreAcceptedAndAgree)
{
    std::mt19937_64 random(20261122);
    for (int i = 0; i < 2000; ++i) {
        const int32_t code = static_cast<int32_t>(random());
        const std::string codeText =
            (code < 0 ? "-" : "") + randomDigits(random, code < 0 ? -int64_t{code} : code);
        const std::string message = randomMessage(random);
        std::vector<std::string> timestamps;
        for (int t = 0; t < 4; ++t) {
            timestamps.push_back(randomDigits(random, random() >> (random() % 64)));
        }
        for (const std::string& xml :
             {getAnswer(codeText, message, timestamps), setAnswer(codeText, message)}) {
            const CanonicalRead read = xml.find("GetAudioTs") != std::string::npos
                                           ? readBothWays<GetAudioTs::Answer>(xml)
                                           : readBothWays<SetAudioDelay::Answer>(xml);
            ASSERT_TRUE(read.accepted) << xml;
            ASSERT_EQ("", read.disagreement) << xml;
        }
    }
}

// Every answer one byte away from a canonical one: each byte replaced by each
// of the 256 values, each byte removed, and each value inserted before each
// byte and at the end.
template <class Answer>
void everyOneByteChangeAgrees(const std::string& canonical)
{
    std::vector<std::string> changed;
    for (size_t at = 0; at <= canonical.size(); ++at) {
        if (at < canonical.size()) {
            changed.push_back(std::string(canonical).erase(at, 1));
        }
        for (int value = 0; value < 256; ++value) {
            const char byte = static_cast<char>(value);
            if (at < canonical.size() && canonical[at] != byte) {
                changed.push_back(std::string(canonical).replace(at, 1, 1, byte));
            }
            changed.push_back(std::string(canonical).insert(at, 1, byte));
        }
    }
    int disagreements = 0;
    for (const std::string& xml : changed) {
        const CanonicalRead read = readBothWays<Answer>(xml);
        if (!read.disagreement.empty() && ++disagreements <= 5) {
            ADD_FAILURE() << read.disagreement << "\n  for " << xml;
        }
    }
    EXPECT_EQ(0, disagreements) << "of " << changed.size() << " changed answers";
}

TEST(CanonicalAnswer, EveryOneByteChangeOfAGetAudioTsAnswerAgrees)
{
    everyOneByteChangeAgrees<GetAudioTs::Answer>(
        getAnswer("1003", "<Message>not in call</Message>", someTimestamps));
}

TEST(CanonicalAnswer, EveryOneByteChangeOfASetAudioDelayAnswerAgrees)
{
    everyOneByteChangeAgrees<SetAudioDelay::Answer>(setAnswer("1000", "<Message/>"));
}

TEST(RequestText, IsWhatTheGenericSerializerPrints)
{
    const LipSyncXmlSerializer serializer;
    const LipSyncXmlSerializer::Generic generic;
    std::mt19937_64 random(7);
    std::vector<unsigned long long> delays = {0, 1, 20, 60, 100, 9876543210123ULL, UINT64_MAX};
    for (int i = 0; i < 100; ++i) {
        delays.push_back(random() >> (random() % 64));
    }
    for (const unsigned long long delay : delays) {
        std::string fast = "previous";
        std::string general;
        EXPECT_EQ("Success", serializer.serialize(SetAudioDelay::Request{delay}, fast).format());
        generic.serialize(SetAudioDelay::Request{delay}, general);
        EXPECT_EQ(general, fast);
    }
    std::string fast = "previous";
    std::string general;
    EXPECT_EQ("Success", serializer.serialize(GetAudioTs::Request(), fast).format());
    generic.serialize(GetAudioTs::Request(), general);
    EXPECT_EQ(general, fast);
}

} // namespace
