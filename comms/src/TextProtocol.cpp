#include "velmo/kvo/comms/TextProtocol.h"

#include "velmo/utilities/log/Assertion.h"

#include <cstring>

namespace velmo {
namespace kvo {
namespace comms {

namespace {

// One chunk buffer for the whole process: receive() calls must never overlap.
char receiveBuffer[512];

using StringProtocol = Protocol<std::string>;

StringProtocol::ProtocolResult toProtocolResult(const Link::LinkResult& linkResult)
{
    using ProtocolResult = StringProtocol::ProtocolResult;
    switch (linkResult.getErrorCode()) {
    case Link::Success:
        return ProtocolResult::success();
    case Link::Closed:
        return ProtocolResult(StringProtocol::ProtocolClosed) << linkResult;
    case Link::ClosedByDistant:
        return ProtocolResult(StringProtocol::ClosedByDistant) << linkResult;
    default:
        return ProtocolResult(StringProtocol::LinkError) << linkResult;
    }
}

// The position of the first marker in `text` at or after `from`, or npos.
// memchr finds each candidate first byte, which is all the marker search of
// std::string does too, without its calls per candidate.
std::string::size_type findMarker(const std::string& text, std::string::size_type from)
{
    const std::string& marker = TextProtocol::endMessageMarker;
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    for (const char* at = begin + from; at < end; ++at) {
        at = static_cast<const char*>(std::memchr(at, marker[0], static_cast<std::size_t>(end - at)));
        if (at == nullptr || end - at < 2) {
            break;
        }
        if (at[1] == marker[1]) {
            return static_cast<std::string::size_type>(at - begin);
        }
    }
    return std::string::npos;
}

// Reads until `receivedData` holds a whole message, and gives the position
// of its marker in `end`. Chunks are cut at their first zero byte: a message
// never carries one, and whatever follows it in the same chunk is dropped.
//
// After a chunk, the search for the marker resumes one byte before the chunk
// (the marker may straddle two chunks) instead of rescanning everything
// buffered: a peer that streams megabytes without a marker must cost linear
// time, not quadratic. The first search of a call covers the whole buffer,
// so what an earlier call left behind is found as before.
StringProtocol::ProtocolResult awaitMessage(Link& link, std::string& receivedData,
                                            std::string::size_type& end)
{
    const std::string& marker = TextProtocol::endMessageMarker;
    std::string::size_type searchFrom = 0;
    while ((end = findMarker(receivedData, searchFrom)) == std::string::npos) {
        unsigned int bytesRead = 0;
        const Link::LinkResult linkResult = link.read(receiveBuffer, sizeof(receiveBuffer) - 1, bytesRead);
        if (linkResult.isFailure()) {
            return toProtocolResult(linkResult);
        }
        receiveBuffer[bytesRead] = '\0';
        const std::string::size_type overlap = marker.size() - 1;
        searchFrom = receivedData.size() < overlap ? 0 : receivedData.size() - overlap;
        receivedData.append(receiveBuffer, strnlen(receiveBuffer, sizeof(receiveBuffer)));
    }
    return StringProtocol::ProtocolResult::success();
}

} // namespace

const std::string TextProtocol::endMessageMarker("\n\n");

TextProtocol::TextProtocol(Link* link) : Protocol<std::string>(link)
{
    // Fixed output (line number included).
    velmo::utilities::assertThat(link != nullptr,
                                 "comms/src/TextProtocol:97: Assertion link != NULL failed: Null pointer");
}

TextProtocol::~TextProtocol() = default;

// The frame is put together in a buffer that each thread keeps, so that a
// steady flow of requests allocates nothing here; a buffer grown by an
// unusually large message is given back.
TextProtocol::ProtocolResult TextProtocol::send(const std::string& message)
{
    static constexpr std::string::size_type keptCapacity = 4096;
    thread_local std::string frame;
    frame.assign(message).append(endMessageMarker);
    const Link::LinkResult written = _link->write(frame.data(), static_cast<unsigned int>(frame.size()));
    if (frame.capacity() > keptCapacity) {
        std::string().swap(frame);
    }
    return toProtocolResult(written);
}

TextProtocol::ProtocolResult TextProtocol::receive(std::string*& message)
{
    message = nullptr;
    std::string::size_type end = 0;
    ProtocolResult result = awaitMessage(*_link, _receivedData, end);
    if (result.isSuccess()) {
        message = new std::string(_receivedData, 0, end);
        _receivedData.erase(0, end + endMessageMarker.size());
    }
    return result;
}

// Mostly what is buffered is this one message and its marker: the buffer
// then changes places with `message` instead of being copied, and each of
// the two strings keeps serving with the capacity it has.
TextProtocol::ProtocolResult TextProtocol::receiveInto(std::string& message)
{
    std::string::size_type end = 0;
    ProtocolResult result = awaitMessage(*_link, _receivedData, end);
    if (result.isFailure()) {
        return result;
    }
    if (end + endMessageMarker.size() == _receivedData.size()) {
        _receivedData.resize(end);
        message.swap(_receivedData);
        _receivedData.clear();
    } else {
        message.assign(_receivedData, 0, end);
        _receivedData.erase(0, end + endMessageMarker.size());
    }
    return result;
}

} // namespace comms
} // namespace kvo
} // namespace velmo
