#include "Engine.h"

#include "NtpTime.h"
#include "ScenarioEngine.h"

#include <chrono>

namespace velmo {
namespace kvo {
namespace sim {

namespace {

constexpr std::uint64_t maxMarginMs = 100;
constexpr std::uint64_t marginStepMs = 20;
// Audio is stamped at capture a little before the engine is asked about it.
constexpr std::uint64_t captureAgeMs = 5;
constexpr std::uint64_t pipelineLatencyMs = 60;
constexpr std::uint64_t wanderStepMs = 5;

// The values of the protocol's examples, so that --fixed answers are byte for byte predictable.
constexpr Timestamps fixedTimestamps{16045690984833536ULL, 16045690985263104ULL, 16045690984404992ULL, 40};

} // namespace

Engine::Engine(bool inCall, bool fixedTimestamps, ScenarioEngine* scenario)
    : _inCall(inCall), _fixedTimestamps(fixedTimestamps), _scenario(scenario),
      _random(static_cast<std::minstd_rand::result_type>(
          std::chrono::steady_clock::now().time_since_epoch().count()))
{
}

Reply Engine::handle(const Request& request)
{
    Reply reply;
    reply.command = request.command;
    reply.code = Success;
    if (!_inCall) {
        reply.code = BadState;
        reply.message = "The engine is not in a call";
        return reply;
    }
    if (request.command == Command::GetAudioTs) {
        reply.timestamps = timestamps();
        reply.unreadable = _scenario != nullptr && _scenario->pollLost();
        return reply;
    }
    if (request.delayMs > maxMarginMs || request.delayMs % marginStepMs != 0) {
        reply.code = InvalidParameter;
        reply.message = "delay must be 0 to 100 in steps of 20";
        return reply;
    }
    _marginMs = request.delayMs;
    if (_scenario != nullptr) {
        _scenario->accept(static_cast<unsigned>(_marginMs));
    }
    return reply;
}

Timestamps Engine::timestamps()
{
    if (_fixedTimestamps) {
        return fixedTimestamps;
    }
    _networkDelayMs = wander(_networkDelayMs, 20, 60);
    _jitterBufferDepthMs = wander(_jitterBufferDepthMs, 20, 80);
    Timestamps stamps;
    stamps.capture = ntpNow() - ntpFromMilliseconds(captureAgeMs);
    stamps.rendering = _scenario != nullptr
                           ? stamps.capture + ntpFromFractionalMilliseconds(_scenario->audioDelayReadingMs())
                           : stamps.capture + ntpFromMilliseconds(pipelineLatencyMs + _marginMs);
    stamps.receiving = stamps.capture - ntpFromMilliseconds(_networkDelayMs);
    stamps.jitterBufferDepth = _jitterBufferDepthMs;
    return stamps;
}

std::uint64_t Engine::wander(std::uint64_t value, std::uint64_t low, std::uint64_t high)
{
    std::uniform_int_distribution<int> step(-static_cast<int>(wanderStepMs), static_cast<int>(wanderStepMs));
    long long next = static_cast<long long>(value) + step(_random);
    if (next < static_cast<long long>(low)) {
        return low;
    }
    if (next > static_cast<long long>(high)) {
        return high;
    }
    return static_cast<std::uint64_t>(next);
}

} // namespace sim
} // namespace kvo
} // namespace velmo
