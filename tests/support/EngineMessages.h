#ifndef AKVO_TESTS_SUPPORT_ENGINEMESSAGES_H
#define AKVO_TESTS_SUPPORT_ENGINEMESSAGES_H

#include <array>
#include <string>

namespace akvo {
namespace test {

// The lip-sync messages byte for byte: the requests as the library writes
// them, the answers in the one layout the engine prints.
inline const std::string envelope = R"(<?xml version="1.0" ?><AKVO version="0.1.0">)";
inline const std::string getAudioTsRequest = envelope + "<GetAudioTs_Request /></AKVO>";

inline std::string setAudioDelayRequest(const std::string& delay)
{
    return envelope + "<SetAudioDelay_Request>" + delay + "</SetAudioDelay_Request></AKVO>";
}

inline std::string framed(const std::string& message)
{
    return message + "\n\n";
}

// `message` is the whole Message element, or nothing for an answer without one.
inline std::string resultElement(const std::string& code, const std::string& message)
{
    return "<Result><ErrorCode>" + code + "</ErrorCode>" + message + "</Result>";
}

using TimestampTexts = std::array<std::string, 4>;

inline std::string timestampsElement(const TimestampTexts& t)
{
    return "<LipSyncNtpTimestamps><capture_timestamp>" + t[0] + "</capture_timestamp><rendering_timestamp>" +
           t[1] + "</rendering_timestamp><receiving_timestamp>" + t[2] +
           "</receiving_timestamp><jitter_buffer_depth>" + t[3] +
           "</jitter_buffer_depth></LipSyncNtpTimestamps>";
}

inline std::string getAudioTsAnswer(const std::string& code, const std::string& message,
                                    const TimestampTexts& t)
{
    return envelope + "<GetAudioTs_Answer>" + resultElement(code, message) + timestampsElement(t) +
           "</GetAudioTs_Answer></AKVO>";
}

inline std::string setAudioDelayAnswer(const std::string& code, const std::string& message)
{
    return envelope + "<SetAudioDelay_Answer>" + resultElement(code, message) +
           "</SetAudioDelay_Answer></AKVO>";
}

// What akvo-lipsync-sim --fixed reports.
inline const TimestampTexts fixedTimestampTexts = {"16045690984833536", "16045690985263104",
                                                   "16045690984404992", "40"};
inline const std::string fixedGetAudioTsAnswer =
    getAudioTsAnswer("1000", "<Message></Message>", fixedTimestampTexts);

} // namespace test
} // namespace akvo

#endif
