#ifndef VELMO_KVO_SYNC_READINGCHECK_H
#define VELMO_KVO_SYNC_READINGCHECK_H

#include <cstdint>

namespace velmo {
namespace kvo {
namespace sync {

// Tells one side's readings that make sense from those that do not. Which
// Event bits stand for this side is given at construction.
class ReadingCheck
{
public:
    ReadingCheck(unsigned renderingBeforeCapture, unsigned delayImplausible, unsigned clockJump);

    // Returns 0 and sets `delayMs` to rendering - capture for a reading that
    // makes sense; otherwise the Event bit that says why.
    unsigned check(long long nowMs, std::uint64_t capture, std::uint64_t rendering, double& delayMs);

private:
    unsigned _renderingBeforeCapture;
    unsigned _delayImplausible;
    unsigned _clockJump;
    bool _seen = false;
    std::uint64_t _lastCapture = 0;
    long long _lastNowMs = 0;
};

} // namespace sync
} // namespace kvo
} // namespace velmo

#endif
