#include "velmo/kvo/cmdfrmwrk/Client.h"

namespace velmo {
namespace kvo {
namespace cmdfrmwrk {

Client::Client(comms::Link* link) : Peer(link) {}

Client::~Client() {}

} // namespace cmdfrmwrk
} // namespace kvo
} // namespace velmo
