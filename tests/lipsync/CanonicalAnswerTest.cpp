#include "CanonicalDifferential.h"
#include "EngineMessages.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace akvo::test;

// Every printable ASCII character a canonical message may hold, in words of eight.
std::string everyMessageCharacter()
{
    std::string words;
    for (char c = '!'; c <= '~'; ++c) {
        if (c != '<' && c != '>' && c != '&') {
            words += std::string(words.size() % 9 == 8 ? " " : "") + c;
        }
    }
    return "<Message>" + words + "</Message>";
}

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
    {"1000", everyMessageCharacter(), "1", true},
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
        const std::string get = getAudioTsAnswer(b.code, b.message, {b.timestamp, "2", "3", b.timestamp});
        const std::string set = setAudioDelayAnswer(b.code, b.message);
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
    const std::string timestamps = timestampsElement({"1", "2", "3", "4"});
    const std::string canonical = getAudioTsAnswer("1000", "<Message/>", {"1", "2", "3", "4"});
    const std::string others[] = {
        envelope + "<GetAudioTs_Answer>" + timestamps + result + "</GetAudioTs_Answer></AKVO>",
        envelope + "<GetAudioTs_Answer>" + result + timestamps + "<Extra/></GetAudioTs_Answer></AKVO>",
        canonical + "<AKVO version=\"0.1.0\"/>",
        std::string(canonical).replace(0, 21, "<?xml version='1.0'?>"),
        canonical.substr(envelope.find("<AKVO")),
    };
    for (const std::string& xml : others) {
        const CanonicalRead read = readBothWays<GetAudioTs::Answer>(xml);
        EXPECT_FALSE(read.accepted) << xml;
        EXPECT_EQ("", read.disagreement) << xml;
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
        getAudioTsAnswer("1003", "<Message>not in call</Message>", fixedTimestampTexts));
}

TEST(CanonicalAnswer, EveryOneByteChangeOfASetAudioDelayAnswerAgrees)
{
    everyOneByteChangeAgrees<SetAudioDelay::Answer>(setAudioDelayAnswer("1000", "<Message/>"));
}

} // namespace
