#ifndef AKVO_TESTS_SIM_PROTOCOLTEXT_H
#define AKVO_TESTS_SIM_PROTOCOLTEXT_H

#include <cstdint>
#include <string>

namespace akvo {
namespace test {

// Requests exactly as the library writes them.
extern const std::string getAudioTsRequest;
std::string setAudioDelayRequest(const std::string& delay);
std::string framed(const std::string& message);

// The answers the simulator gives with --fixed and no fault.
extern const std::string fixedGetAudioTsAnswer;
extern const std::string setAudioDelaySuccess;
extern const std::string delayRefused;
// What the garbage fault sends.
extern const std::string garbageText;

// The number between <tag> and </tag> in `document`; fails the test when there is none.
std::uint64_t numberIn(const std::string& document, const std::string& tag);

// NTP form of a duration, as the engine adds it to its timestamps.
std::uint64_t ntpMilliseconds(std::uint64_t milliseconds);

} // namespace test
} // namespace akvo

#endif
