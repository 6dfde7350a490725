#ifndef VELMO_KVO_SIM_SIGNALPIPE_H
#define VELMO_KVO_SIM_SIGNALPIPE_H

namespace velmo {
namespace kvo {
namespace sim {

// SIGINT and SIGTERM become a readable byte on a pipe that the event loop
// polls, so that the loop, not the handler, shuts the server down. SIGPIPE
// is ignored: a client that goes away shows up as a failed write.
class SignalPipe
{
public:
    SignalPipe() = default;
    ~SignalPipe();
    SignalPipe(const SignalPipe&) = delete;
    SignalPipe& operator=(const SignalPipe&) = delete;

    bool install();
    int fd() const { return _readFd; }

private:
    int _readFd = -1;
};

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
