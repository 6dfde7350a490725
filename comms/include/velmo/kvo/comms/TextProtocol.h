#ifndef VELMO_KVO_COMMS_TEXTPROTOCOL_H
#define VELMO_KVO_COMMS_TEXTPROTOCOL_H

#include "velmo/kvo/comms/Protocol.h"
#include "velmo/utilities/Export.h"

#include <string>

namespace velmo {
namespace kvo {
namespace comms {

// Frames each message with two line feeds. Received chunks go through one
// process-wide buffer, so no two receive() calls may run at the same time,
// even on different objects.
class VELMO_EXPORT TextProtocol : public Protocol<std::string>
{
public:
    static const std::string endMessageMarker;

    explicit TextProtocol(Link* link);
    ~TextProtocol() override;

    ProtocolResult send(const std::string& message) override;
    ProtocolResult receive(std::string*& message) override;

private:
    std::string _receivedData;
};

} // namespace comms
} // namespace kvo
} // namespace velmo

#endif
