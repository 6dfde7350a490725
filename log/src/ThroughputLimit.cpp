#include "ThroughputLimit.h"

#include "velmo/kvo/log/AndroidLog.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

extern "C" {
// All zero, so the limit is off, until the library's load-time initialiser
// has read the environment.
struct akvo_throughput_limit throughput_limit;
}

namespace velmo {
namespace kvo {
namespace logwriter {

namespace {

// "records/milliseconds". Anything that does not give two numbers switches
// the limit off; the milliseconds are turned into microseconds with 32-bit
// arithmetic, as the exported field is 32 bits wide.
__attribute__((constructor)) void loadThroughputLimit()
{
    throughput_limit.count = 0;
    unsigned int records = 0;
    unsigned int milliseconds = 0;
    const char* value = std::getenv("LIBLOG_THROUGHPUT_LIMIT");
    if (value != nullptr && std::sscanf(value, "%u/%u", &records, &milliseconds) == 2) {
        throughput_limit.threshold = records;
        throughput_limit.sleep_us = milliseconds * 1000u;
    } else {
        throughput_limit.threshold = 0;
        throughput_limit.sleep_us = 0;
    }
}

} // namespace

// The counter is shared by all threads without a lock: a lost increment only
// makes a pause come later, which is good enough for a coarse brake.
void applyThroughputLimit()
{
    if (throughput_limit.sleep_us == 0) {
        return;
    }
    if (++throughput_limit.count >= throughput_limit.threshold) {
        usleep(throughput_limit.sleep_us);
        throughput_limit.count = 0;
    }
}

} // namespace logwriter
} // namespace kvo
} // namespace velmo
