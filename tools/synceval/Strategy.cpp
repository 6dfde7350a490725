#include "Strategy.h"

namespace velmo {
namespace kvo {
namespace synceval {

namespace {

class ControllerStrategy : public Strategy
{
public:
    explicit ControllerStrategy(unsigned pollIntervalMs) : _controller(pollIntervalMs) {}

    void reconnected() override { _controller.reconnected(); }

    Action update(const sync::Poll& poll) override
    {
        const sync::Decision decision = _controller.update(poll);
        return {decision.marginMs, decision.applyMargin, decision.videoDelayMs, decision.infeasible};
    }

    void marginApplied(long long nowMs, unsigned marginMs, bool accepted) override
    {
        _controller.marginApplied(nowMs, marginMs, accepted);
    }

private:
    sync::Controller _controller;
};

class NoControl : public Strategy
{
public:
    // The margin 0 is set again on every connection, as a runner would.
    void reconnected() override { _apply = true; }
    Action update(const sync::Poll&) override { return {0, _apply, 0, false}; }
    void marginApplied(long long, unsigned, bool accepted) override { _apply = !accepted; }

private:
    bool _apply = false;
};

} // namespace

std::unique_ptr<Strategy> makeController(unsigned pollIntervalMs)
{
    return std::make_unique<ControllerStrategy>(pollIntervalMs);
}

std::unique_ptr<Strategy> makeNoControl()
{
    return std::make_unique<NoControl>();
}

} // namespace synceval
} // namespace kvo
} // namespace velmo
