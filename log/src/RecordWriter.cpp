#include "RecordWriter.h"

#include "LittleEndian.h"
#include "LogSocket.h"
#include "ThreadId.h"
#include "ThroughputLimit.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <pthread.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace logwriter {

namespace {

using WriteFunction = int (*)(int logId, iovec* payload, size_t count);

constexpr size_t headerSize = 11;
constexpr size_t maxPayloadSize = 4076;
// The log daemon's own user: its records would come back to it.
constexpr uid_t logDaemonUid = 1036;

int initialWriter(int logId, iovec* payload, size_t count);
int socketWriter(int logId, iovec* payload, size_t count);

int nullWriter(int, iovec*, size_t)
{
    return -1;
}

// The writer moves from initialWriter to socketWriter on the first connect,
// or to nullWriter when the process cannot have a socket; never back.
std::atomic<WriteFunction> currentWriter{initialWriter};
std::atomic<int> logSocket{-1};
// Held only while the socket is opened or reopened; sending takes no lock.
pthread_mutex_t initLock = PTHREAD_MUTEX_INITIALIZER;
std::atomic<uid_t> cachedUid{0};

// With initLock held. When only the connect fails, the initialiser stays
// current, so the next record tries again.
int openFirstLogSocket()
{
    bool failedAtConnect = false;
    const int fd = openLogSocket(failedAtConnect);
    if (fd < 0) {
        currentWriter = failedAtConnect ? initialWriter : nullWriter;
        return fd;
    }
    logSocket = fd;
    currentWriter = socketWriter;
    return 0;
}

// With initLock held. Other threads may be sending on the current descriptor
// without any lock, so its number is never left free for the process to hand
// out again: the new socket is moved onto it in one step, and when no new
// socket can be had, the dead one keeps the number while every later record
// is turned away with -EBADF.
int replaceLogSocket()
{
    bool failedAtConnect = false;
    const int fd = openLogSocket(failedAtConnect);
    if (fd < 0) {
        logSocket = -1;
        if (!failedAtConnect) {
            currentWriter = nullWriter;
        }
        return fd;
    }
    const int current = logSocket;
    if (current < 0) {
        logSocket = fd;
        return 0;
    }
    const int moved = dup2(fd, current);
    const int error = errno;
    close(fd);
    return moved < 0 ? -error : 0;
}

// A connect failure keeps this writer current, so the next record tries again.
int initialWriter(int logId, iovec* payload, size_t count)
{
    pthread_mutex_lock(&initLock);
    if (currentWriter == initialWriter) {
        const int opened = openFirstLogSocket();
        if (opened < 0) {
            pthread_mutex_unlock(&initLock);
            return opened;
        }
    }
    pthread_mutex_unlock(&initLock);
    return currentWriter.load()(logId, payload, count);
}

bool isLogDaemonUser()
{
    uid_t uid = cachedUid;
    if (uid == 0) {
        uid = getuid();
        cachedUid = uid;
    }
    return uid == logDaemonUid;
}

void fillHeader(uint8_t (&header)[headerSize], int logId)
{
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    header[0] = static_cast<uint8_t>(logId);
    storeLittleEndian16(header + 1, static_cast<uint16_t>(currentThreadId()));
    storeLittleEndian32(header + 3, static_cast<uint32_t>(now.tv_sec));
    storeLittleEndian32(header + 7, static_cast<uint32_t>(now.tv_nsec));
}

// Copies the caller's buffers to `out`, cutting the payload at
// maxPayloadSize: the buffer that crosses the limit is shortened, and the
// ones after it are left out of the count returned (but kept in `out`).
size_t limitPayload(const iovec* payload, size_t count, iovec* out)
{
    size_t total = 0;
    size_t kept = count;
    for (size_t i = 0; i < count; ++i) {
        out[i] = payload[i];
        if (kept != count) {
            continue;
        }
        const size_t left = maxPayloadSize - total;
        if (out[i].iov_len > left) {
            out[i].iov_len = left;
            kept = left == 0 ? i : i + 1;
        } else {
            total += out[i].iov_len;
        }
    }
    return kept;
}

int sendRecord(const iovec* vector, size_t count)
{
    const ssize_t written = writev(logSocket, vector, static_cast<int>(count));
    return written < 0 ? -errno : static_cast<int>(written);
}

// The daemon went away under an open socket: connect once more and resend.
// The resend carries every buffer of the record, beyond the payload limit too.
int reconnectAndResend(const iovec* vector, size_t count)
{
    pthread_mutex_lock(&initLock);
    const int opened = replaceLogSocket();
    pthread_mutex_unlock(&initLock);
    if (opened < 0) {
        return opened;
    }
    return sendRecord(vector, count);
}

int socketWriter(int logId, iovec* payload, size_t count)
{
    if (isLogDaemonUser()) {
        return 0;
    }
    if (logSocket < 0) {
        return -EBADF;
    }

    uint8_t header[headerSize];
    fillHeader(header, logId);
    iovec vector[1 + maxPayloadBuffers];
    vector[0].iov_base = header;
    vector[0].iov_len = headerSize;
    const size_t kept = limitPayload(payload, count, vector + 1);

    applyThroughputLimit();

    int result = sendRecord(vector, 1 + kept);
    if (result == -ENOTCONN) {
        result = reconnectAndResend(vector, 1 + count);
    }
    if (result > static_cast<int>(headerSize)) {
        result -= static_cast<int>(headerSize);
    }
    return result;
}

} // namespace

int writeRecord(int logId, iovec* payload, size_t count)
{
    return currentWriter.load()(logId, payload, count);
}

} // namespace logwriter
} // namespace kvo
} // namespace velmo
