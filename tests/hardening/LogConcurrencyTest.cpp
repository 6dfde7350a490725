#include "LogReceiver.h"
#include "WriterMessages.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using akvo::test::LogRecord;
using akvo::test::writerMessage;

namespace {

constexpr int writerCount = 6;
constexpr int recordsPerWriter = 400;

// Every writer thread logs its records at once, while the receiver reads
// or before it does. A record that the writer reports as sent must arrive
// whole and exactly once; one that it refuses must be refused with -EAGAIN
// (the receiver's queue was full) and never arrive. Returns how many were
// refused.
int runRound(akvo::test::LogReceiver& receiver, bool reading)
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
    int results[writerCount][recordsPerWriter];
    std::vector<std::thread> threads;
    for (int writer = 0; writer < writerCount; ++writer) {
        threads.emplace_back([&results, writer] {
            const std::string tag = "W" + std::to_string(writer);
            for (int record = 0; record < recordsPerWriter; ++record) {
                const std::string message = writerMessage(writer, record);
                const int priority = AKVO_LOG_DEBUG + record % 4;
                results[writer][record] =
                    record % 2 == 0 ? __android_log_write(priority, tag.c_str(), message.c_str())
                                    : __android_log_print(priority, tag.c_str(), "%s", message.c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    writing = false;
    reading ? reader.join() : receive();

    int arrivals[writerCount][recordsPerWriter] = {};
    for (const LogRecord& record : received) {
        int writer = -1;
        int number = -1;
        std::sscanf(record.message.c_str(), "writer %d record %d ", &writer, &number);
        if (writer < 0 || writer >= writerCount || number < 0 || number >= recordsPerWriter) {
            ADD_FAILURE() << "a record nobody wrote: " << record.message;
            continue;
        }
        EXPECT_EQ("W" + std::to_string(writer), record.tag) << record.message;
        EXPECT_EQ(writerMessage(writer, number), record.message);
        EXPECT_EQ(AKVO_LOG_DEBUG + number % 4, record.priority) << record.message;
        ++arrivals[writer][number];
    }
    int refused = 0;
    for (int writer = 0; writer < writerCount; ++writer) {
        for (int number = 0; number < recordsPerWriter; ++number) {
            const int result = results[writer][number];
            // Priority, then tag and message with their NULs.
            const int payload =
                static_cast<int>(4 + std::to_string(writer).size() + writerMessage(writer, number).size());
            EXPECT_EQ(result > 0 ? payload : -EAGAIN, result) << "writer " << writer << " record " << number;
            EXPECT_EQ(result > 0 ? 1 : 0, arrivals[writer][number])
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
    akvo::test::LogReceiver& receiver = akvo::test::processLogReceiver();

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
