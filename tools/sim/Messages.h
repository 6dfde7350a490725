#ifndef VELMO_KVO_SIM_MESSAGES_H
#define VELMO_KVO_SIM_MESSAGES_H

#include "Engine.h"

#include <string>

namespace velmo {
namespace kvo {
namespace sim {

// Envelope version of the lip-sync protocol.
extern const char* const protocolVersion;

// Text that no XML parser accepts, sent by the garbage fault.
extern const char* const garbageText;

const char* requestTag(Command command);
const char* answerTag(Command command);

// Reads one request document. On failure returns false and sets `reason` to a short description.
bool parseRequest(const std::string& document, Request& request, std::string& reason);

// The answer document in the envelope of `version`, without the end-of-message marker.
std::string answerDocument(const Reply& reply, const std::string& version);

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
