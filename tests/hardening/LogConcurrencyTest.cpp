#include "LogReceiver.h"
#include "WriterMessages.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace akvo::test;

constexpr int recordsPerWriter = 400;

// Every writer thread logs its records at once, while the receiver reads
// or before it does. A record that the writer reports as sent must arrive
// whole and exactly once; one that it refuses must be refused with -EAGAIN
// (the receiver's queue was full) and never arrive. Returns how many were
// refused.
int runRound(LogReceiver& receiver, bool reading)
{
    std::atomic<bool> writing{true};
    std::vector<LogRecord> received;
    const auto receive = [&] {
        for (bool more = true; more;) {
            more = writing;
            while (std::optional<LogRecord> record = receiver.nextRecord(std::chrono::milliseconds(20))) {
                received.push_back(std::move(*record));
            }
        }
    };
    std::thread reader;
    if (reading) {
        reader = std::thread(receive);
    }
    const PerRecord results =
        writeFromThreads(recordsPerWriter, [](int priority, const char* tag, const char* message) {
            return priority % 2 == 0 ? __android_log_write(priority, tag, message)
                                     : __android_log_print(priority, tag, "%s", message);
        });
    writing = false;
    reading ? reader.join() : receive();

    const PerRecord arrived = arrivals(received, recordsPerWriter);
    int refused = 0;
    for (int writer = 0; writer < writerCount; ++writer) {
        for (int number = 0; number < recordsPerWriter; ++number) {
            const int result = results[writer][number];
            EXPECT_EQ(result > 0 ? sentSize(writer, number) : -EAGAIN, result)
                << "writer " << writer << " record " << number;
            EXPECT_EQ(result > 0 ? 1 : 0, arrived[writer][number])
                << "writer " << writer << " record " << number;
            refused += result > 0 ? 0 : 1;
        }
    }
    EXPECT_EQ(writerCount * recordsPerWriter - refused, static_cast<int>(received.size()));
    return refused;
}

// The throughput counter is shared by the writer threads without any lock,
// as intended: a lost increment only delays a pause. A ThreadSanitizer run of
// this test therefore needs a suppression for `throughput_limit`
// ("race:throughput_limit" and the writer's applyThroughputLimit).
TEST(LogWriterConcurrency, RecordsArriveWholeOrAreRefusedWithEagain)
{
    ASSERT_EQ(50u, throughput_limit.threshold)
        << "run through ctest, which sets LIBLOG_THROUGHPUT_LIMIT=50/1";
    ASSERT_EQ(1000u, throughput_limit.sleep_us);
    LogReceiver& receiver = processLogReceiver();

    // Nobody reads while the writers run, so the receiver's queue fills up
    // after a few records and both outcomes must occur.
    const int refused = runRound(receiver, false);
    EXPECT_GT(refused, 0);
    EXPECT_LT(refused, writerCount * recordsPerWriter);
    runRound(receiver, true);

    // Whatever increments were lost, the last writer to reach the threshold
    // reset the counter after its pause.
    EXPECT_LT(throughput_limit.count, throughput_limit.threshold);
}

} // namespace
