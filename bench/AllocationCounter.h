#ifndef AKVO_BENCH_ALLOCATIONCOUNTER_H
#define AKVO_BENCH_ALLOCATIONCOUNTER_H

#include <cstdint>

namespace akvo {
namespace bench {

// Counts the heap allocations and releases made through the global operators
// new and delete, which this binary replaces (the C library has no malloc
// hooks). Everything the library allocates goes through them: its strings,
// streams and TinyXML nodes.
struct AllocationCount
{
    uint64_t allocations;
    uint64_t releases;
};

AllocationCount currentAllocationCount();

} // namespace bench
} // namespace akvo

#endif
