#ifndef AKVO_TESTS_HARDENING_SYSCALLFAULTS_H
#define AKVO_TESTS_HARDENING_SYSCALLFAULTS_H

#include <cstddef>
#include <string>
#include <vector>

namespace akvo {
namespace test {

// A seam under the C library for one test binary: it is linked with
// --wrap=socket,connect,read,write,writev,shutdown,close, so every reference
// from the objects linked into it (the static layers included) goes through
// the wrappers in SyscallFaults.cpp. Outside a watch they call through
// unchanged; gtest's own reads and writes pass there too.

enum class SysCall
{
    Socket,
    Connect,
    Read,
    Write,
    Writev,
    Shutdown,
    Close
};

// Told apart by the socket type: the transport uses stream sockets, the log
// writer a datagram socket.
enum class Owner
{
    Link,
    LogWriter,
    Unknown
};

enum class Failure
{
    Eintr,
    Eagain,
    ShortTransfer,      // read 1 byte, or write half of what was asked
    NothingTransferred, // return 0: end of stream for a read
    Eio,
    Econnreset,
    Epipe,
    Emfile,
    Econnrefused,
    Enotconn
};

struct SeenCall
{
    SysCall call;
    Owner owner;
    int phase;
};

struct Watch
{
    std::vector<SeenCall> calls;
    // Broken rules: a link shut down other than exactly once before its
    // close, a link socket left open, a call on a descriptor of unknown origin.
    std::vector<std::string> problems;
    // Log writer sockets made during the watch and still open.
    int openLogSockets = 0;
};

// Counts the wrapped calls from now on; the call numbered `failingCall`
// (from 1; 0 for none) fails as `failure` says instead of its usual effect.
void startWatching(size_t failingCall, Failure failure);
// Tags the calls that follow, so that a call can be traced to the operation that made it.
void setPhase(int phase);
Watch stopWatching();

const char* nameOf(SysCall call);
const char* nameOf(Owner owner);
const char* nameOf(Failure failure);
int errnoOf(Failure failure);

} // namespace test
} // namespace akvo

#endif
