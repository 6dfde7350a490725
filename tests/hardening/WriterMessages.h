#ifndef AKVO_TESTS_HARDENING_WRITERMESSAGES_H
#define AKVO_TESTS_HARDENING_WRITERMESSAGES_H

#include "LogReceiver.h"
#include "velmo/kvo/log/AndroidLog.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace akvo {
namespace test {

constexpr int writerCount = 6;

// The message of one record of one writer thread. Sizes vary so that records
// of different lengths interleave in the socket, and the text names its
// writer and number, so that a lost, repeated or foreign record shows.
inline std::string writerMessage(int writer, int record)
{
    return "writer " + std::to_string(writer) + " record " + std::to_string(record) + " " +
           std::string(static_cast<std::size_t>((writer * 37 + record * 11) % 300),
                       static_cast<char>('a' + writer));
}

inline int writerPriority(int record)
{
    return AKVO_LOG_DEBUG + record % 4;
}

// What the writer returns for a record it sent: the priority byte, then the
// tag and the message with their NULs.
inline int sentSize(int writer, int record)
{
    return static_cast<int>(4 + std::to_string(writer).size() + writerMessage(writer, record).size());
}

// The result of each record of each writer, or how often each arrived.
using PerRecord = std::vector<std::vector<int>>;

// Every writer thread logs `records` records at once, under the tag "W"
// and its number, through `write`; returns what each call returned.
inline PerRecord writeFromThreads(int records, const std::function<int(int, const char*, const char*)>& write)
{
    PerRecord results(writerCount, std::vector<int>(static_cast<std::size_t>(records)));
    std::vector<std::thread> threads;
    for (int writer = 0; writer < writerCount; ++writer) {
        threads.emplace_back([&, writer] {
            const std::string tag = "W" + std::to_string(writer);
            for (int record = 0; record < records; ++record) {
                results[writer][record] =
                    write(writerPriority(record), tag.c_str(), writerMessage(writer, record).c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return results;
}

// How often each record arrived; a record nobody wrote, or not as its
// writer wrote it, fails the test.
inline PerRecord arrivals(const std::vector<LogRecord>& received, int records)
{
    PerRecord counts(writerCount, std::vector<int>(static_cast<std::size_t>(records)));
    for (const LogRecord& record : received) {
        int writer = -1;
        int number = -1;
        std::sscanf(record.message.c_str(), "writer %d record %d ", &writer, &number);
        if (writer < 0 || writer >= writerCount || number < 0 || number >= records) {
            ADD_FAILURE() << "a record nobody wrote: " << record.message;
            continue;
        }
        EXPECT_EQ("W" + std::to_string(writer), record.tag) << record.message;
        EXPECT_EQ(writerMessage(writer, number), record.message);
        EXPECT_EQ(writerPriority(number), record.priority) << record.message;
        ++counts[writer][number];
    }
    return counts;
}

} // namespace test
} // namespace akvo

#endif
