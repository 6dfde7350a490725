// The receive path of the text protocol over a real socket pair: a second
// thread sends the input in chunks, then shuts its side down. The messages
// must be exactly the frames of the chunks as the protocol keeps them (each
// cut at its first zero byte), and the end must read as the peer's hang-up.
// Byte 0 gives the number of chunk sizes (1 + byte % 8), the next bytes the
// sizes (byte + 1; 0xff for a whole 511-byte read). Sequenced packets keep
// each chunk one read, so the zero-byte cuts do not move.
#include "Require.h"

#include "velmo/kvo/comms/Link.h"
#include "velmo/kvo/comms/TextProtocol.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <linux/sockios.h>
#include <memory>
#include <string>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using akvo::fuzz::require;
using velmo::kvo::comms::TextProtocol;

// Cuts the stream after the chunk sizes into chunks; `kept` gets what the
// protocol keeps of them, each up to its first zero byte.
std::vector<std::string> cutIntoChunks(const uint8_t* data, size_t size, std::string& kept)
{
    const size_t sizeCount = size == 0 ? 0 : 1 + data[0] % 8;
    std::vector<std::string> chunks;
    for (size_t at = 1 + sizeCount, i = 0; at < size; at += chunks.back().size(), ++i) {
        const uint8_t sizeByte = data[1 + i % sizeCount];
        chunks.emplace_back(reinterpret_cast<const char*>(data) + at,
                            std::min<size_t>(sizeByte == 0xff ? 511 : sizeByte + 1u, size - at));
        kept.append(chunks.back(), 0, chunks.back().find('\0'));
    }
    return chunks;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::string kept;
    const std::vector<std::string> chunks = cutIntoChunks(data, size, kept);
    int fds[2];
    require(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, fds) == 0, "socketpair", strerror(errno));
    std::thread writer([&] {
        for (const std::string& chunk : chunks) {
            ssize_t sent;
            do {
                sent = ::send(fds[1], chunk.data(), chunk.size(), MSG_NOSIGNAL);
            } while (sent < 0 && errno == EINTR);
            require(sent == static_cast<ssize_t>(chunk.size()), "a chunk goes out as one packet",
                    strerror(errno));
        }
        // A sequenced-packet reader may see the shutdown before a packet queued
        // just ahead of it, so the end is signalled only once all is read.
        int unread = 0;
        while (::ioctl(fds[1], SIOCOUTQ, &unread) == 0 && unread > 0) {
            std::this_thread::yield();
        }
        ::shutdown(fds[1], SHUT_WR);
    });
    {
        TextProtocol protocol(new velmo::kvo::comms::Link(fds[0]));
        for (size_t at = 0;; at += 2) {
            std::string* raw = nullptr;
            const TextProtocol::ProtocolResult result = protocol.receive(raw);
            const std::unique_ptr<std::string> message(raw);
            const size_t marker = kept.find("\n\n", at);
            if (result.isFailure()) {
                require(!message && marker == std::string::npos &&
                            result.format() == "Protocol has been closed by distant (Code 40005): "
                                               "{Closed by distant (Code 10003)}",
                        "once every frame is received, the end reads as the peer's hang-up", result.format());
                break;
            }
            require(message && marker != std::string::npos && *message == kept.substr(at, marker - at),
                    "messages are the frames of the zero-cut chunks, in order", message ? *message : "");
            at = marker;
        }
    }
    writer.join();
    ::close(fds[1]);
    return 0;
}
