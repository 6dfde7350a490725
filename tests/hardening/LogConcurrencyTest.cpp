#include "LogReceiver.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <set>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

using akvo::test::LogRecord;

namespace {

// The ctest properties of this test set LIBLOG_THROUGHPUT_LIMIT=50/1, which
// the writer reads once at load time.
constexpr uint32_t expectedThreshold = 50;
constexpr uint32_t expectedSleepUs = 1000;

constexpr int writerCount = 6;
constexpr int recordsPerWriter = 400;

std::string tagOf(int writer)
{
    return "W" + std::to_string(writer);
}

// Sizes vary so that records of different lengths interleave in the socket.
std::string messageOf(int writer, int record)
{
    return "writer " + std::to_string(writer) + " record " + std::to_string(record) + " " +
           std::string(static_cast<size_t>((writer * 37 + record * 11) % 300),
                       static_cast<char>('a' + writer));
}

int priorityOf(int record)
{
    return AKVO_LOG_DEBUG + record % 4;
}

struct Writer
{
    pid_t threadId = 0;
    std::vector<int> results;
};

void writeRecords(int index, Writer& writer)
{
    writer.threadId = static_cast<pid_t>(gettid());
    writer.results.resize(recordsPerWriter);
    const std::string tag = tagOf(index);
    for (int record = 0; record < recordsPerWriter; ++record) {
        const std::string message = messageOf(index, record);
        writer.results[static_cast<size_t>(record)] =
            record % 2 == 0 ? __android_log_write(priorityOf(record), tag.c_str(), message.c_str())
                            : __android_log_print(priorityOf(record), tag.c_str(), "%s", message.c_str());
    }
}

// Reads records until the writers are done and nothing more is queued.
std::vector<LogRecord> receiveUntilQuiet(akvo::test::LogReceiver& receiver, const std::atomic<bool>& writing)
{
    std::vector<LogRecord> records;
    for (;;) {
        const bool stillWriting = writing;
        std::optional<LogRecord> record = receiver.nextRecord(std::chrono::milliseconds(20));
        if (record) {
            records.push_back(std::move(*record));
        } else if (!stillWriting) {
            return records;
        }
    }
}

struct RoundCounts
{
    size_t received = 0;
    size_t dropped = 0;
};

// Every writer thread logs its records at once. A record that the writer
// reports as sent must arrive whole and exactly once; one that it refuses
// must be refused with -EAGAIN (the receiver's queue was full) and never
// arrive.
RoundCounts runRound(akvo::test::LogReceiver& receiver, bool receiveWhileWriting)
{
    std::atomic<bool> writing{true};
    std::vector<LogRecord> received;
    std::thread reader;
    if (receiveWhileWriting) {
        reader = std::thread([&] { received = receiveUntilQuiet(receiver, writing); });
    }
    std::vector<Writer> writers(writerCount);
    std::vector<std::thread> threads;
    for (int index = 0; index < writerCount; ++index) {
        threads.emplace_back(writeRecords, index, std::ref(writers[static_cast<size_t>(index)]));
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    writing = false;
    if (receiveWhileWriting) {
        reader.join();
    } else {
        received = receiveUntilQuiet(receiver, writing);
    }

    RoundCounts counts;
    std::set<std::pair<int, int>> seen;
    for (const LogRecord& record : received) {
        int index = -1;
        int number = -1;
        if (std::sscanf(record.message.c_str(), "writer %d record %d ", &index, &number) != 2 || index < 0 ||
            index >= writerCount || number < 0 || number >= recordsPerWriter) {
            ADD_FAILURE() << "a record nobody wrote: tag '" << record.tag << "' message '" << record.message
                          << "'";
            continue;
        }
        const Writer& writer = writers[static_cast<size_t>(index)];
        EXPECT_EQ(tagOf(index), record.tag) << record.message;
        EXPECT_EQ(messageOf(index, number), record.message);
        EXPECT_EQ(priorityOf(number), record.priority) << record.message;
        EXPECT_EQ(AKVO_LOG_ID_MAIN, record.logId) << record.message;
        EXPECT_EQ(static_cast<uint16_t>(writer.threadId), record.threadId) << record.message;
        EXPECT_TRUE(seen.insert({index, number}).second) << "received twice: " << record.message;
        EXPECT_GT(writer.results[static_cast<size_t>(number)], 0)
            << "refused but received: " << record.message;
    }
    for (int index = 0; index < writerCount; ++index) {
        const Writer& writer = writers[static_cast<size_t>(index)];
        for (int number = 0; number < recordsPerWriter; ++number) {
            const int result = writer.results[static_cast<size_t>(number)];
            if (result > 0) {
                ++counts.received;
                const size_t payload = 1 + tagOf(index).size() + 1 + messageOf(index, number).size() + 1;
                EXPECT_EQ(static_cast<int>(payload), result) << "writer " << index << " record " << number;
                EXPECT_EQ(1u, seen.count({index, number}))
                    << "sent but not received: writer " << index << " record " << number;
            } else {
                ++counts.dropped;
                EXPECT_EQ(-EAGAIN, result) << "writer " << index << " record " << number;
            }
        }
    }
    EXPECT_EQ(counts.received, received.size());
    return counts;
}

// The throughput counter is shared by the writer threads without any lock,
// as intended: a lost increment only delays a pause. A ThreadSanitizer run of
// this test therefore needs a suppression for `throughput_limit`
// ("race:throughput_limit" and the writer's applyThroughputLimit).
TEST(LogWriterConcurrency, RecordsArriveWholeOrAreRefusedWithEagain)
{
    ASSERT_EQ(expectedThreshold, throughput_limit.threshold)
        << "run through ctest, which sets LIBLOG_THROUGHPUT_LIMIT=50/1";
    ASSERT_EQ(expectedSleepUs, throughput_limit.sleep_us)
        << "run through ctest, which sets LIBLOG_THROUGHPUT_LIMIT=50/1";
    akvo::test::LogReceiver& receiver = akvo::test::processLogReceiver();

    // Nobody reads while the writers run, so the receiver's queue fills up
    // after a few records and both outcomes must occur.
    const RoundCounts unread = runRound(receiver, false);
    EXPECT_GT(unread.received, 0u);
    EXPECT_GT(unread.dropped, 0u);

    runRound(receiver, true);

    // Whatever increments were lost, the last writer to reach the threshold
    // reset the counter after its pause.
    EXPECT_LT(throughput_limit.count, throughput_limit.threshold);
}

} // namespace
