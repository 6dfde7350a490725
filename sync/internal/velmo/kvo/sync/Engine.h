#ifndef VELMO_KVO_SYNC_ENGINE_H
#define VELMO_KVO_SYNC_ENGINE_H

#include "velmo/kvo/common/LipSyncNtpTimestamps.h"

#include <cstdint>
#include <string>

namespace velmo {
namespace kvo {
namespace sync {

// The engine as the runner's polling logic (PollLoop) reaches it: the C++
// Service, a handle of the C interface, or a binding's own service. Each call
// returns the Service's code (1000 on success), or another code of the way in
// (the C interface's 1100 when a deadline ended the call), and on failure
// puts the whole text of its result into `failure`, so that a success costs
// no text.
class Engine
{
public:
    // False once the connection is gone: never made, disconnected, or closed
    // by the way in itself (a deadline).
    virtual bool isConnected() = 0;
    virtual int32_t connect(std::string& failure) = 0;
    // Only after a failed exchange: part of an answer may still wait on the connection.
    virtual void disconnect() = 0;
    virtual int32_t getAudioTimestamps(common::LipSyncNtpTimestamps& audio, std::string& failure) = 0;
    virtual int32_t setAudioDelayMargin(unsigned marginMs, std::string& failure) = 0;

protected:
    ~Engine() = default;
};

} // namespace sync
} // namespace kvo
} // namespace velmo

#endif
