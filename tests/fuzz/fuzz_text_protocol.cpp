// The receive path of the text protocol over a real socket pair. The input
// is cut into chunks that a second thread sends one by one before it shuts
// its side down; receive() is called until it fails. The messages must be
// exactly the frames of the chunks as the protocol keeps them (each cut at its
// first zero byte), and the end must read as the peer's hang-up.
//
// Input layout: byte 0 gives the number of chunk sizes (1 + byte % 8), the
// next bytes the sizes (byte + 1, and 0xff for a whole 511-byte read); the
// rest is the stream, cut by cycling through the sizes. A sequenced-packet
// pair keeps each chunk one read: a stream pair would merge chunks at the
// kernel's whim, and where the zero-byte cut falls depends on the reads.
#include "Require.h"

#include "velmo/kvo/comms/Link.h"
#include "velmo/kvo/comms/TextProtocol.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using akvo::fuzz::require;
using velmo::kvo::comms::Link;
using velmo::kvo::comms::TextProtocol;

const size_t maxSizes = 8;
const size_t fullRead = 511;

std::vector<std::string> cutIntoChunks(const uint8_t* data, size_t size)
{
    std::vector<std::string> chunks;
    if (size == 0) {
        return chunks;
    }
    const size_t sizeCount = 1 + data[0] % maxSizes;
    if (size <= 1 + sizeCount) {
        return chunks;
    }
    std::vector<size_t> sizes;
    for (size_t i = 1; i <= sizeCount; ++i) {
        sizes.push_back(data[i] == 0xff ? fullRead : data[i] + 1u);
    }
    const char* stream = reinterpret_cast<const char*>(data + 1 + sizeCount);
    const size_t streamSize = size - 1 - sizeCount;
    for (size_t at = 0, i = 0; at < streamSize; at += chunks.back().size(), ++i) {
        chunks.emplace_back(stream + at, std::min(sizes[i % sizes.size()], streamSize - at));
    }
    return chunks;
}

// The messages a reader of these chunks gets: each chunk up to its first
// zero byte, the whole cut at every pair of line feeds; a tail without its
// marker is never handed out.
std::vector<std::string> expectedMessages(const std::vector<std::string>& chunks)
{
    std::string kept;
    for (const std::string& chunk : chunks) {
        kept.append(chunk, 0, chunk.find('\0'));
    }
    std::vector<std::string> messages;
    for (size_t at = 0, marker; (marker = kept.find("\n\n", at)) != std::string::npos; at = marker + 2) {
        messages.push_back(kept.substr(at, marker - at));
    }
    return messages;
}

void sendChunks(int fd, const std::vector<std::string>& chunks)
{
    for (const std::string& chunk : chunks) {
        ssize_t sent;
        do {
            sent = ::send(fd, chunk.data(), chunk.size(), MSG_NOSIGNAL);
        } while (sent < 0 && errno == EINTR);
        require(sent == static_cast<ssize_t>(chunk.size()), "a chunk goes out as one packet",
                strerror(errno));
    }
    ::shutdown(fd, SHUT_WR);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::vector<std::string> chunks = cutIntoChunks(data, size);
    const std::vector<std::string> expected = expectedMessages(chunks);

    int fds[2];
    require(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, fds) == 0, "socketpair", strerror(errno));
    std::thread writer(sendChunks, fds[1], std::cref(chunks));
    {
        TextProtocol protocol(new Link(fds[0]));
        size_t received = 0;
        for (;;) {
            std::string* raw = nullptr;
            const TextProtocol::ProtocolResult result = protocol.receive(raw);
            const std::unique_ptr<std::string> message(raw);
            if (result.isFailure()) {
                require(message == nullptr, "a failed receive hands out no message");
                require(
                    result.format() ==
                        "Protocol has been closed by distant (Code 40005): {Closed by distant (Code 10003)}",
                    "the end of the chunks reads as the peer's hang-up", result.format());
                break;
            }
            require(message != nullptr, "a successful receive hands out a message");
            require(message->find("\n\n") == std::string::npos, "a message holds no marker", *message);
            require(received < expected.size() && *message == expected[received],
                    "messages are the frames of the zero-cut chunks, in order", *message);
            ++received;
        }
        require(received == expected.size(), "every complete frame is received");
    }
    writer.join();
    ::close(fds[1]);
    return 0;
}
