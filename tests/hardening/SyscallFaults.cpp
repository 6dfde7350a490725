#include "SyscallFaults.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

extern "C" {
int __real_socket(int domain, int type, int protocol);
int __real_connect(int fd, const sockaddr* address, socklen_t length);
ssize_t __real_read(int fd, void* data, size_t size);
ssize_t __real_write(int fd, const void* data, size_t size);
ssize_t __real_writev(int fd, const iovec* vector, int count);
int __real_shutdown(int fd, int how);
int __real_close(int fd);
}

namespace akvo {
namespace test {

namespace {

struct Descriptor
{
    Owner owner = Owner::Unknown;
    bool connected = false;
    int shutdowns = 0;
};

bool watching = false;
size_t failingCallNumber = 0;
Failure failingAs = Failure::Eintr;
int currentPhase = 0;
std::map<int, Descriptor> descriptors;
Watch watch;

Owner ownerOf(int fd)
{
    const auto found = descriptors.find(fd);
    return found == descriptors.end() ? Owner::Unknown : found->second.owner;
}

// Records the call; true when it is the one to fail.
bool isFailing(SysCall call, Owner owner)
{
    watch.calls.push_back({call, owner, currentPhase});
    if (owner == Owner::Unknown) {
        watch.problems.push_back(std::string(nameOf(call)) +
                                 " on a descriptor the watch did not see created");
    }
    return watch.calls.size() == failingCallNumber;
}

int fail()
{
    errno = errnoOf(failingAs);
    return -1;
}

void forget(int fd)
{
    const auto found = descriptors.find(fd);
    if (found == descriptors.end()) {
        return;
    }
    if (found->second.connected && found->second.shutdowns != 1) {
        watch.problems.push_back("a link was closed after " + std::to_string(found->second.shutdowns) +
                                 " shutdowns instead of one");
    }
    descriptors.erase(found);
}

} // namespace

void startWatching(size_t failingCall, Failure failure)
{
    failingCallNumber = failingCall;
    failingAs = failure;
    currentPhase = 0;
    descriptors.clear();
    watch = Watch();
    watching = true;
}

void setPhase(int phase)
{
    currentPhase = phase;
}

Watch stopWatching()
{
    watching = false;
    for (const auto& entry : descriptors) {
        if (entry.second.owner == Owner::LogWriter) {
            ++watch.openLogSockets;
        } else {
            watch.problems.push_back(std::string("a ") + nameOf(entry.second.owner) +
                                     " socket was left open");
        }
    }
    descriptors.clear();
    return std::move(watch);
}

const char* nameOf(SysCall call)
{
    switch (call) {
    case SysCall::Socket:
        return "socket";
    case SysCall::Connect:
        return "connect";
    case SysCall::Read:
        return "read";
    case SysCall::Write:
        return "write";
    case SysCall::Writev:
        return "writev";
    case SysCall::Shutdown:
        return "shutdown";
    case SysCall::Close:
        return "close";
    }
    return "?";
}

const char* nameOf(Owner owner)
{
    switch (owner) {
    case Owner::Link:
        return "link";
    case Owner::LogWriter:
        return "log writer";
    case Owner::Unknown:
        return "unknown";
    }
    return "?";
}

const char* nameOf(Failure failure)
{
    switch (failure) {
    case Failure::Eintr:
        return "EINTR";
    case Failure::Eagain:
        return "EAGAIN";
    case Failure::ShortTransfer:
        return "short transfer";
    case Failure::NothingTransferred:
        return "nothing transferred";
    case Failure::Eio:
        return "EIO";
    case Failure::Econnreset:
        return "ECONNRESET";
    case Failure::Epipe:
        return "EPIPE";
    case Failure::Emfile:
        return "EMFILE";
    case Failure::Econnrefused:
        return "ECONNREFUSED";
    case Failure::Enotconn:
        return "ENOTCONN";
    }
    return "?";
}

int errnoOf(Failure failure)
{
    switch (failure) {
    case Failure::Eintr:
        return EINTR;
    case Failure::Eagain:
        return EAGAIN;
    case Failure::Eio:
        return EIO;
    case Failure::Econnreset:
        return ECONNRESET;
    case Failure::Epipe:
        return EPIPE;
    case Failure::Emfile:
        return EMFILE;
    case Failure::Econnrefused:
        return ECONNREFUSED;
    case Failure::Enotconn:
        return ENOTCONN;
    case Failure::ShortTransfer:
    case Failure::NothingTransferred:
        break;
    }
    return 0;
}

} // namespace test
} // namespace akvo

using namespace akvo::test;

extern "C" {

int __wrap_socket(int domain, int type, int protocol)
{
    if (!watching) {
        return __real_socket(domain, type, protocol);
    }
    const int kind = type & 0xf;
    const Owner owner = kind == SOCK_STREAM  ? Owner::Link
                        : kind == SOCK_DGRAM ? Owner::LogWriter
                                             : Owner::Unknown;
    if (isFailing(SysCall::Socket, owner)) {
        return fail();
    }
    const int fd = __real_socket(domain, type, protocol);
    if (fd >= 0) {
        descriptors[fd] = Descriptor{owner, false, 0};
    }
    return fd;
}

int __wrap_connect(int fd, const sockaddr* address, socklen_t length)
{
    if (!watching) {
        return __real_connect(fd, address, length);
    }
    const Owner owner = ownerOf(fd);
    if (isFailing(SysCall::Connect, owner)) {
        return fail();
    }
    const int result = __real_connect(fd, address, length);
    if (result == 0 && owner == Owner::Link) {
        descriptors[fd].connected = true;
    }
    return result;
}

ssize_t __wrap_read(int fd, void* data, size_t size)
{
    if (!watching || !isFailing(SysCall::Read, ownerOf(fd))) {
        return __real_read(fd, data, size);
    }
    if (failingAs == Failure::ShortTransfer) {
        return __real_read(fd, data, std::min<size_t>(size, 1));
    }
    return failingAs == Failure::NothingTransferred ? 0 : fail();
}

ssize_t __wrap_write(int fd, const void* data, size_t size)
{
    if (!watching || !isFailing(SysCall::Write, ownerOf(fd))) {
        return __real_write(fd, data, size);
    }
    if (failingAs == Failure::ShortTransfer) {
        return __real_write(fd, data, std::max<size_t>(size / 2, 1));
    }
    return failingAs == Failure::NothingTransferred ? 0 : fail();
}

ssize_t __wrap_writev(int fd, const iovec* vector, int count)
{
    if (!watching || !isFailing(SysCall::Writev, ownerOf(fd))) {
        return __real_writev(fd, vector, count);
    }
    return fail();
}

int __wrap_shutdown(int fd, int how)
{
    if (!watching) {
        return __real_shutdown(fd, how);
    }
    const auto found = descriptors.find(fd);
    if (found != descriptors.end()) {
        ++found->second.shutdowns;
    }
    if (isFailing(SysCall::Shutdown, ownerOf(fd))) {
        return fail();
    }
    return __real_shutdown(fd, how);
}

// As on Linux, a close that reports a failure has released the descriptor all the same.
int __wrap_close(int fd)
{
    if (!watching) {
        return __real_close(fd);
    }
    const bool failing = isFailing(SysCall::Close, ownerOf(fd));
    forget(fd);
    const int result = __real_close(fd);
    return failing ? fail() : result;
}

} // extern "C"
