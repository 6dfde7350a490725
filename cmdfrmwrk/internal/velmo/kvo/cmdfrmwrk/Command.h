#ifndef VELMO_KVO_CMDFRMWRK_COMMAND_H
#define VELMO_KVO_CMDFRMWRK_COMMAND_H

#include "velmo/utilities/result/Result.h"

#include <cstdint>

namespace velmo {
namespace kvo {
namespace cmdfrmwrk {

// The server's own verdict on a command, as carried in an answer. It shares
// the block starting at 1000 with the lip-sync service's codes.
class Command
{
public:
    enum ResultCode : int32_t
    {
        Success = 1000,
        UnknownError = 1001,
        InvalidParameter = 1002,
        BadState = 1003
    };

    struct ResultTrait
    {
        using ResultCode = Command::ResultCode;
        static constexpr ResultCode successCode = Success;
        static const char* toString(ResultCode code);
    };

    // Starts as UnknownError, so an answer that was never filled in reads as
    // a server failure.
    struct Answer
    {
        Answer();
        virtual ~Answer();

        velmo::utilities::result::Result<ResultTrait> result;
    };
};

} // namespace cmdfrmwrk
} // namespace kvo
} // namespace velmo

#endif
