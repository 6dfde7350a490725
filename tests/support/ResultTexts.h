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

// What a Service call returns when the engine hangs up during the exchange.
const char closedByDistantText[] =
    "An error has occured in the transport layer (Code 1005): {Connection closed by distant (Code 5905): "
    "{Protocol has been closed by distant (Code 40005): {Closed by distant (Code 10003)}}}";

} // namespace test
} // namespace akvo

#endif
