#ifndef AKVO_TESTS_CMDFRMWRK_SCRIPTEDPEER_H
#define AKVO_TESTS_CMDFRMWRK_SCRIPTEDPEER_H

#include <string>
#include <thread>
#include <vector>

namespace akvo {
namespace test {

// The server end of a stream socketpair, played by a thread. For each reply
// it reads one request frame and then writes the reply as given (nothing
// for an empty reply); then it hangs up.
class ScriptedPeer
{
public:
    explicit ScriptedPeer(const std::vector<std::string>& replies);
    ~ScriptedPeer();

    // The client end, for a Link to own.
    int clientFd() const { return _clientFd; }

    // Waits for the script to end and returns every byte the peer read.
    std::string received();

    ScriptedPeer(const ScriptedPeer&) = delete;
    ScriptedPeer& operator=(const ScriptedPeer&) = delete;

private:
    void run(std::vector<std::string> replies);
    bool readFrame();

    int _clientFd;
    int _peerFd;
    std::string _received;
    std::thread _thread;
};

} // namespace test
} // namespace akvo

#endif
