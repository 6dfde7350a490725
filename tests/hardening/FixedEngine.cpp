#include "FixedEngine.h"

#include "Simulator.h"

#include <cstring>

namespace akvo {
namespace test {

const LipSyncNtpTimestamps fixedTimestamps = {16045690984833536ULL, 16045690985263104ULL,
                                              16045690984404992ULL, 40};
const LipSyncNtpTimestamps untouchedTimestamps = {1, 2, 3, 4};

bool sameTimestamps(const LipSyncNtpTimestamps& a, const LipSyncNtpTimestamps& b)
{
    return a.tCap == b.tCap && a.tRdr == b.tRdr && a.tRcv == b.tRcv && a.jbmDepth == b.jbmDepth;
}

const char closedByDistantText[] =
    "An error has occured in the transport layer (Code 1005): {Connection closed by distant (Code 5905): "
    "{Protocol has been closed by distant (Code 40005): {Closed by distant (Code 10003)}}}";

std::string ioErrorText(int error)
{
    return "An error has occured in the transport layer (Code 1005): {Protocol error (Code 5902): "
           "{Link error (Code 40003): {I/O error (Code 10004): {" +
           std::string(std::strerror(error)) + " (Code " + std::to_string(error) + ")}}}}";
}

std::string rawGetAudioTsAnswer(const std::string& socketPath)
{
    RawClient client(socketPath);
    std::string answer;
    if (!client.write("<?xml version=\"1.0\" ?><AKVO version=\"0.1.0\"><GetAudioTs_Request /></AKVO>\n\n") ||
        !client.readMessage(answer)) {
        return std::string();
    }
    return answer;
}

} // namespace test
} // namespace akvo
