#ifndef VELMO_KVO_CLI_OUTCOME_H
#define VELMO_KVO_CLI_OUTCOME_H

#include "velmo/kvo/lipsyncapi/akvo_lipsync.h"

#include <cstdint>
#include <string>

namespace velmo {
namespace kvo {
namespace cli {

// What a call of the service ended with: the library's code (1000 for
// success, 1100 when --timeout-ms ran out) and the whole text of its result.
struct Outcome
{
    int32_t code;
    std::string text;

    bool isSuccess() const { return code == AKVO_LIPSYNC_SUCCESS; }
};

} // namespace cli
} // namespace kvo
} // namespace velmo

#endif
