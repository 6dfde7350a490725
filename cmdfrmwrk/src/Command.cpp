#include "velmo/kvo/cmdfrmwrk/Command.h"

namespace velmo {
namespace kvo {
namespace cmdfrmwrk {

const char* Command::ResultTrait::toString(ResultCode code)
{
    switch (code) {
    case Success:
        return "Success";
    case UnknownError:
        return "Unknown error";
    case InvalidParameter:
        return "Invalid parameter";
    case BadState:
        return "Bad state";
    }
    return "Invalid error (Unreachable)";
}

Command::Answer::Answer() : result(UnknownError) {}

Command::Answer::~Answer() {}

} // namespace cmdfrmwrk
} // namespace kvo
} // namespace velmo
