#ifndef VELMO_KVO_COMMS_TEXTPROTOCOL_H
#define VELMO_KVO_COMMS_TEXTPROTOCOL_H

/**
 * @file
 * `velmo::kvo::comms::TextProtocol`, text messages framed by two line feeds.
 */

#include "velmo/kvo/comms/Protocol.h"
#include "velmo/utilities/Export.h"

#include <string>

namespace velmo {
namespace kvo {
namespace comms {

/**
 * Frames each message with two line feeds: a message is its text followed by
 * endMessageMarker, with no length and no escaping. This is how the Service
 * talks to the engine.
 *
 * Received chunks go through one process-wide buffer, so no two receive()
 * calls may run at the same time, even on different objects; the Service's
 * calls that wait for the engine count among them. Send and receive block
 * with no time-out; Link::close() on the owned Link, from another thread,
 * wakes them.
 *
 * When memory runs out, std::bad_alloc propagates (only the Service turns
 * that into a result).
 */
class VELMO_EXPORT TextProtocol : public Protocol<std::string>
{
public:
    /// Two line feeds, the end of every message.
    static const std::string endMessageMarker;

    /**
     * Takes ownership of @p link.
     *
     * @param link the connected Link; null is a programming error that stops
     *        the process with an assertion.
     */
    explicit TextProtocol(Link* link);

    /// Deletes the Link, which closes the socket; buffered bytes are dropped.
    ~TextProtocol() override;

    /**
     * Writes @p message and the marker in one Link::write().
     *
     * @param message the text; it must not hold two line feeds in a row nor a
     *        zero byte, which the receiver would take as the end of it. It is
     *        not checked.
     * @return #Success; #ProtocolClosed, #ClosedByDistant or #LinkError with
     *         the Link's result nested.
     */
    ProtocolResult send(const std::string& message) override;

    /**
     * Blocks until a whole message has arrived, and returns the text before
     * the first marker. Bytes after the marker stay buffered for the next
     * call, which returns them without reading when they hold a whole
     * message. Bytes from a zero byte to the end of the chunk read with it
     * are dropped. The time taken is linear in the message's size.
     *
     * @param[out] message on success, a new string without the marker, which
     *        the caller owns and deletes; null on failure.
     * @return #Success; #ProtocolClosed, #ClosedByDistant or #LinkError with
     *         the Link's result nested; a partial message stays buffered.
     */
    ProtocolResult receive(std::string*& message) override;

    /**
     * As receive(), but into @p message, whose buffer serves again: the
     * library's own exchange, which allocates nothing once its buffers have
     * grown to the size of the answers. Not exported by the shared library.
     *
     * @param[out] message on success, the text before the marker; unchanged
     *        on failure.
     * @return as receive().
     */
    VELMO_LOCAL ProtocolResult receiveInto(std::string& message);

private:
    std::string _receivedData;
};

} // namespace comms
} // namespace kvo
} // namespace velmo

#endif
