#ifndef VELMO_KVO_TOOLS_EXITSTATUS_H
#define VELMO_KVO_TOOLS_EXITSTATUS_H

namespace velmo {
namespace kvo {
namespace tools {

// Exit status of every tool for a command line, or an argument in it, that
// the program cannot run with. CLI11's own statuses (105, 109, ...) say
// nothing a script can rely on.
constexpr int usageError = 2;

} // namespace tools
} // namespace kvo
} // namespace velmo

#endif
