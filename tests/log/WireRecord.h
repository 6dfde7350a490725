#ifndef AKVO_TESTS_LOG_WIRERECORD_H
#define AKVO_TESTS_LOG_WIRERECORD_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace akvo {
namespace test {

// A datagram split along the record layout, read independently of the
// logcat decoder so that the two cannot share a mistake.
struct WireRecord
{
    explicit WireRecord(const std::vector<uint8_t>& datagram)
        : logId(datagram.at(0)), threadId(static_cast<uint16_t>(datagram.at(1) | datagram.at(2) << 8)),
          time(load32(datagram, 3), load32(datagram, 7)), payload(datagram.begin() + 11, datagram.end())
    {
    }

    static uint32_t load32(const std::vector<uint8_t>& bytes, size_t at)
    {
        return static_cast<uint32_t>(bytes.at(at)) | static_cast<uint32_t>(bytes.at(at + 1)) << 8 |
               static_cast<uint32_t>(bytes.at(at + 2)) << 16 | static_cast<uint32_t>(bytes.at(at + 3)) << 24;
    }

    uint8_t logId;
    uint16_t threadId;
    // Seconds and nanoseconds, ordered as a time.
    std::pair<uint32_t, uint32_t> time;
    std::string payload;
};

} // namespace test
} // namespace akvo

#endif
