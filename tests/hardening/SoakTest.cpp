#include "FdCount.h"
#include "FixedEngine.h"
#include "QuietStderr.h"
#include "Sanitizers.h"
#include "Simulator.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <gtest/gtest.h>

#include <malloc.h>
#include <sstream>
#include <string>

using akvo::test::LipSyncNtpTimestamps;
using velmo::kvo::lipsyncapi::Service;

namespace {

// A cycle takes well under a millisecond; AddressSanitizer makes it about
// three times slower, and its leak checker then stands in for the heap
// comparison below.
#ifdef AKVO_UNDER_ASAN
constexpr int cycles = 2000;
#else
constexpr int cycles = 5000;
#endif
// Everything built once per process (success results, static strings) is
// built during these.
constexpr int warmUpCycles = 50;
// A leak of the smallest heap block per cycle would exceed this many times over.
constexpr size_t heapGrowthBound = 16 * 1024;

// One application session; returns what went wrong, or an empty text.
std::string runCycle(Service& service, const std::string& socketPath, int cycle)
{
    const unsigned long long margin = 20ULL * static_cast<unsigned long long>(cycle % 6);
    std::ostringstream failure;
    const std::string connected = service.connect(socketPath).format();
    if (connected != "Success") {
        failure << "connect: " << connected;
        return failure.str();
    }
    LipSyncNtpTimestamps timestamps = akvo::test::untouchedTimestamps;
    const std::string fetched = service.getAudioTimestamps(timestamps).format();
    const std::string set = service.setAudioDelayMargin(margin).format();
    unsigned long long stored = margin + 1;
    service.getAudioDelayMargin(stored);
    const std::string disconnected = service.disconnect().format();
    if (fetched != "Success" || !akvo::test::sameTimestamps(akvo::test::fixedTimestamps, timestamps)) {
        failure << "getAudioTimestamps: " << fetched;
    } else if (set != "Success" || stored != margin) {
        failure << "setAudioDelayMargin(" << margin << "): " << set << ", stored " << stored;
    } else if (disconnected != "Success") {
        failure << "disconnect: " << disconnected;
    }
    return failure.str();
}

TEST(Soak, ThousandsOfSessionsKeepDescriptorsAndHeapFlat)
{
    akvo::test::SimulatorProcess simulator({"--fixed"});
    akvo::test::QuietStderr quiet;
    Service service;
    for (int cycle = 0; cycle < warmUpCycles; ++cycle) {
        const std::string failure = runCycle(service, simulator.socketPath(), cycle);
        ASSERT_EQ("", failure) << "warm-up cycle " << cycle;
    }

    const int descriptors = akvo::test::openDescriptorCount();
#ifndef AKVO_UNDER_ASAN
    const size_t heapInUse = mallinfo2().uordblks;
#endif
    for (int cycle = 0; cycle < cycles; ++cycle) {
        const std::string failure = runCycle(service, simulator.socketPath(), cycle);
        ASSERT_EQ("", failure) << "cycle " << cycle << " of " << cycles;
    }
    EXPECT_EQ(descriptors, akvo::test::openDescriptorCount());
#ifndef AKVO_UNDER_ASAN
    const size_t heapAfter = mallinfo2().uordblks;
    EXPECT_LE(heapAfter, heapInUse + heapGrowthBound) << "heap in use grew from " << heapInUse << " to "
                                                      << heapAfter << " bytes over " << cycles << " cycles";
#endif
}

} // namespace
