#include "ProtocolText.h"

#include <gtest/gtest.h>

namespace akvo {
namespace test {

const std::string getAudioTsRequest =
    R"(<?xml version="1.0" ?><AKVO version="0.1.0"><GetAudioTs_Request /></AKVO>)";

std::string setAudioDelayRequest(const std::string& delay)
{
    return R"(<?xml version="1.0" ?><AKVO version="0.1.0"><SetAudioDelay_Request>)" + delay +
           "</SetAudioDelay_Request></AKVO>";
}

std::string framed(const std::string& message)
{
    return message + "\n\n";
}

const std::string fixedGetAudioTsAnswer =
    R"(<?xml version="1.0" ?><AKVO version="0.1.0"><GetAudioTs_Answer><Result><ErrorCode>1000</ErrorCode>)"
    R"(<Message></Message></Result><LipSyncNtpTimestamps><capture_timestamp>16045690984833536</capture_timestamp>)"
    R"(<rendering_timestamp>16045690985263104</rendering_timestamp>)"
    R"(<receiving_timestamp>16045690984404992</receiving_timestamp>)"
    R"(<jitter_buffer_depth>40</jitter_buffer_depth></LipSyncNtpTimestamps></GetAudioTs_Answer></AKVO>)";

const std::string setAudioDelaySuccess =
    R"(<?xml version="1.0" ?><AKVO version="0.1.0"><SetAudioDelay_Answer><Result><ErrorCode>1000</ErrorCode>)"
    R"(<Message/></Result></SetAudioDelay_Answer></AKVO>)";

const std::string delayRefused =
    R"(<?xml version="1.0" ?><AKVO version="0.1.0"><SetAudioDelay_Answer><Result><ErrorCode>1002</ErrorCode>)"
    R"(<Message>delay must be 0 to 100 in steps of 20</Message></Result></SetAudioDelay_Answer></AKVO>)";

const std::string garbageText = "%%% engine garbage: this is not an XML document %%%";

std::uint64_t numberIn(const std::string& document, const std::string& tag)
{
    std::string open = "<" + tag + ">";
    std::size_t start = document.find(open);
    std::size_t end = document.find("</" + tag + ">");
    if (start == std::string::npos || end == std::string::npos) {
        ADD_FAILURE() << "no " << tag << " in " << document;
        return 0;
    }
    start += open.size();
    return std::stoull(document.substr(start, end - start));
}

std::uint64_t ntpMilliseconds(std::uint64_t milliseconds)
{
    return (milliseconds << 32) / 1000;
}

} // namespace test
} // namespace akvo
