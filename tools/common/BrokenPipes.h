#ifndef VELMO_KVO_TOOLS_BROKENPIPES_H
#define VELMO_KVO_TOOLS_BROKENPIPES_H

#include <csignal>

namespace velmo {
namespace kvo {
namespace tools {

// A write to a pipe or a socket whose reader is gone raises SIGPIPE, whose
// default kills without a word: a CLI whose engine hung up, a log listener
// piped into head, a simulator whose client left. Each tool ignores it at
// start and sees the failed write (EPIPE) instead, which it reports and
// survives or ends on, with its own exit status and its socket file removed.
inline void ignoreBrokenPipes()
{
    std::signal(SIGPIPE, SIG_IGN);
}

} // namespace tools
} // namespace kvo
} // namespace velmo

#endif
