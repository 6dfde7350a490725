#ifndef VELMO_KVO_LIPSYNCAPI_UNIXCONNECT_H
#define VELMO_KVO_LIPSYNCAPI_UNIXCONNECT_H

#include "Deadline.h"
#include "velmo/kvo/comms/Client.h"

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// Opens a Unix stream socket to `path` as comms::Client::connectUnixServer
// does, with the same results, but a set deadline ends the attempt: a
// listener whose queue is full keeps connect() waiting, for good when the
// engine has stopped, and Linux ends that wait at the socket's send time-out.
// `path` is shorter than a Unix address. On success `fd` is the connected
// socket, blocking and without time-out, as a Link takes it; on failure it is
// -1, nothing is left open, and `outOfTime` tells whether the deadline ended
// the attempt.
comms::Client::ClientResult connectUnixSocket(const char* path, const Deadline& deadline, int& fd,
                                              bool& outOfTime);

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
