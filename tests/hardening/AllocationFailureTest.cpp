#include "CannedEngine.h"
#include "EngineMessages.h"
#include "StderrCapture.h"
#include "Timestamps.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

using namespace akvo::test;
using velmo::kvo::lipsyncapi::Service;

namespace {

// Above this many bytes in one request, allocation fails as it does when the
// address space runs out; zero lifts the limit.
std::atomic<size_t> largestAllocation{0};

void* allocate(size_t size)
{
    const size_t limit = largestAllocation;
    void* memory = limit != 0 && size > limit ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

} // namespace

// Every allocation of this binary, the library's and TinyXML's included,
// comes through here.
void* operator new(size_t size)
{
    return allocate(size);
}
void* operator new[](size_t size)
{
    return allocate(size);
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, size_t) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, size_t) noexcept
{
    std::free(memory);
}

namespace {

// An answer too large for the memory left is a failed exchange, reported
// like any other transport failure; the Service stays usable once it has
// reconnected.
TEST(AllocationFailure, AnAnswerTooLargeForMemoryIsATransportError)
{
    CannedEngine huge(std::string(12 * 1024 * 1024, 'x') + "\n\n");
    CannedEngine fixed(framed(getAudioTsAnswer("1000", "<Message/>", {"1", "2", "3", "4"})));
    StderrCapture quiet;
    Service service;
    ASSERT_EQ("Success", service.connect(huge.socketPath()).format());
    LipSyncNtpTimestamps timestamps = untouchedTimestamps;
    largestAllocation = 4 * 1024 * 1024;
    const std::string failure = service.getAudioTimestamps(timestamps).format();
    largestAllocation = 0;
    EXPECT_EQ(
        "An error has occured in the transport layer (Code 1005): {Unknown error (Code 5901): Not enough "
        "memory for the exchange}",
        failure);
    EXPECT_TRUE(sameTimestamps(untouchedTimestamps, timestamps));

    ASSERT_EQ("Success", service.disconnect().format());
    ASSERT_EQ("Success", service.connect(fixed.socketPath()).format());
    EXPECT_EQ("Success", service.getAudioTimestamps(timestamps).format());
    EXPECT_TRUE(sameTimestamps({1, 2, 3, 4}, timestamps));
}

// Where not even a result text fits, the call still returns: a bare
// UnknownError, and no exception.
TEST(AllocationFailure, NoAllocationAtAllGivesABareUnknownError)
{
    StderrCapture quiet;
    Service service;
    unsigned long long delayMs = 7;
    largestAllocation = 1;
    const Service::ResultCode code = service.getAudioDelayMargin(delayMs).getErrorCode();
    largestAllocation = 0;
    EXPECT_EQ(Service::UnknownError, code);
    EXPECT_EQ(7u, delayMs);
}

} // namespace
