#include "ChildProcess.h"
#include "FdCount.h"
#include "Simulator.h"
#include "StderrCapture.h"
#include "Timestamps.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <gtest/gtest.h>

#include <malloc.h>
#include <string>

using namespace akvo::test;
using velmo::kvo::lipsyncapi::Service;

namespace {

// One application session: the results of its calls, then the margin read back.
std::string runCycle(Service& service, const std::string& socketPath, unsigned long long margin)
{
    LipSyncNtpTimestamps timestamps = untouchedTimestamps;
    unsigned long long stored = 0;
    std::string results;
    for (const std::string& result :
         {service.connect(socketPath).format(), service.getAudioTimestamps(timestamps).format(),
          service.setAudioDelayMargin(margin).format(), service.getAudioDelayMargin(stored).format(),
          service.disconnect().format()}) {
        results += result + " ";
    }
    return results + std::to_string(stored) +
           (sameTimestamps(fixedTimestamps, timestamps) ? "" : " other timestamps");
}

TEST(Soak, ThousandsOfSessionsKeepDescriptorsAndHeapFlat)
{
    // AddressSanitizer makes a cycle about three times slower, and its leak
    // checker then stands in for the heap comparison.
    const bool underAsan = __lsan_do_leak_check != nullptr;
    // Everything built once per process (success results, static strings) is built during the first cycles.
    const int warmUp = 50;
    const int cycles = warmUp + (underAsan ? 2000 : 5000);
    SimulatorProcess simulator({"--fixed"});
    StderrCapture quiet;
    Service service;
    int descriptors = 0;
    size_t heapInUse = 0;
    for (int cycle = 0; cycle < cycles; ++cycle) {
        if (cycle == warmUp) {
            descriptors = openDescriptorCount();
            heapInUse = mallinfo2().uordblks;
        }
        const unsigned long long margin = 20ULL * static_cast<unsigned long long>(cycle % 6);
        ASSERT_EQ("Success Success Success Success Success " + std::to_string(margin),
                  runCycle(service, simulator.socketPath(), margin))
            << "cycle " << cycle;
    }
    EXPECT_EQ(descriptors, openDescriptorCount());
    // A leak of the smallest heap block per cycle would exceed this bound many times over.
    if (!underAsan) {
        EXPECT_LE(mallinfo2().uordblks, heapInUse + 16 * 1024);
    }
}

} // namespace
