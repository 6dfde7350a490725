#ifndef VELMO_KVO_LIPSYNCAPI_LOGGER_H
#define VELMO_KVO_LIPSYNCAPI_LOGGER_H

#include "velmo/utilities/log/GenericLog.h"

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// Selects where the API call lines go and under which tag.
struct Logger
{
    using Log = velmo::utilities::Log;
    static constexpr const char* tag = "AKVOLIPSYNCAPI";
};

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
