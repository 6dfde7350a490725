#ifndef AKVO_TESTS_HARDENING_WRITERMESSAGES_H
#define AKVO_TESTS_HARDENING_WRITERMESSAGES_H

#include <cstddef>
#include <string>

namespace akvo {
namespace test {

// The message of one record of one writer thread. Sizes vary so that records
// of different lengths interleave in the socket, and the text names its
// writer and number, so that a lost, repeated or foreign record shows.
inline std::string writerMessage(int writer, int record)
{
    return "writer " + std::to_string(writer) + " record " + std::to_string(record) + " " +
           std::string(static_cast<std::size_t>((writer * 37 + record * 11) % 300),
                       static_cast<char>('a' + writer));
}

} // namespace test
} // namespace akvo

#endif
