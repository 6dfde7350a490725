#ifndef VELMO_KVO_SIM_ENGINE_H
#define VELMO_KVO_SIM_ENGINE_H

#include <cstdint>
#include <random>
#include <string>

namespace velmo {
namespace kvo {
namespace sim {

class ScenarioEngine;

enum class Command
{
    GetAudioTs,
    SetAudioDelay
};

struct Request
{
    Command command = Command::GetAudioTs;
    std::uint64_t delayMs = 0; // SetAudioDelay only
};

struct Timestamps
{
    std::uint64_t capture = 0;
    std::uint64_t rendering = 0;
    std::uint64_t receiving = 0;
    std::uint64_t jitterBufferDepth = 0;
};

struct Reply
{
    Command command = Command::GetAudioTs;
    int code = 0;
    std::string message;
    Timestamps timestamps;   // GetAudioTs only; zero unless the command was carried out
    bool unreadable = false; // the answer is to be sent as something no client can read
};

// The engine's result codes as they travel in ErrorCode.
enum ErrorCode
{
    Success = 1000,
    InvalidParameter = 1002,
    BadState = 1003
};

// The audio engine as its lip-sync server sees it: in a call or idle, with
// one delay margin for the whole process, and an audio path whose timestamps
// follow the host clock, or, given a scenario, whose delay the scenario moves.
class Engine
{
public:
    Engine(bool inCall, bool fixedTimestamps, ScenarioEngine* scenario);
    Reply handle(const Request& request);

private:
    Timestamps timestamps();
    // One step of a bounded random walk, so consecutive values stay plausible.
    std::uint64_t wander(std::uint64_t value, std::uint64_t low, std::uint64_t high);

    bool _inCall;
    bool _fixedTimestamps;
    ScenarioEngine* _scenario;
    std::uint64_t _marginMs = 0;
    std::uint64_t _networkDelayMs = 40;
    std::uint64_t _jitterBufferDepthMs = 40;
    std::minstd_rand _random;
};

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
