#ifndef AKVO_TESTS_SUPPORT_RESULTTEXTS_H
#define AKVO_TESTS_SUPPORT_RESULTTEXTS_H

#include <cstring>
#include <string>

namespace akvo {
namespace test {

// The rendering of a failed Result<ErrnoTrait> built from `error`.
inline std::string errnoText(int error)
{
    return std::string(std::strerror(error)) + " (Code " + std::to_string(error) + ")";
}

// What Service calls return, for the failures that several layers pass on.
const char notConnectedText[] = "Bad state (Code 1003): Not connected to the audio KVO";

const char closedByDistantText[] =
    "An error has occured in the transport layer (Code 1005): {Connection closed by distant (Code 5905): "
    "{Protocol has been closed by distant (Code 40005): {Closed by distant (Code 10003)}}}";

const char notInCallText[] = "The AKVO is not performing a call (Code 1007): {Bad state (Code 1003): The "
                             "engine is not in a call}";

inline std::string cannotConnectText(const std::string& path, int error)
{
    return "Cannot connect to Audio KVO (Code 1004): {Connection has failed (Code 20002): Unable to connect "
           "to " +
           path + " {" + errnoText(error) + "}}";
}

inline std::string ioErrorText(int error)
{
    return "An error has occured in the transport layer (Code 1005): {Protocol error (Code 5902): "
           "{Link error (Code 40003): {I/O error (Code 10004): {" +
           errnoText(error) + "}}}}";
}

// The doubled blanks are the library's.
inline std::string marginNotAStepText(unsigned long long delayMs)
{
    return "Invalid Param (Code 1002):  audio delay margin " + std::to_string(delayMs) +
           " doesn't match  granularity of 20ms.";
}

inline std::string marginOutOfRangeText(unsigned long long delayMs)
{
    return "Invalid Param (Code 1002):  audio delay margin " + std::to_string(delayMs) +
           " is not in range [0..100]";
}

} // namespace test
} // namespace akvo

#endif
