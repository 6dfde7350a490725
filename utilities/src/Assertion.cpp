#include "velmo/utilities/log/Assertion.h"

#include "velmo/utilities/log/GenericLog.h"

#include <cstdlib>

namespace velmo {
namespace utilities {

void failAssertion(const char* siteText)
{
    {
        Log::Stream<Level::Fatal> stream("VELMO");
        stream << siteText;
    }
    std::abort();
}

} // namespace utilities
} // namespace velmo
