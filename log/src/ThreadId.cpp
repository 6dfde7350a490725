#include "ThreadId.h"

#include <pthread.h>
#include <unistd.h>

namespace velmo {
namespace kvo {
namespace logwriter {

namespace {

// 0 until the thread's first record; no thread has the id 0.
thread_local pid_t cachedThreadId = 0;

// The child of a fork is a new thread that inherits its parent's copy.
void forgetThreadId()
{
    cachedThreadId = 0;
}

__attribute__((constructor)) void forgetThreadIdInForkedChildren()
{
    pthread_atfork(nullptr, nullptr, forgetThreadId);
}

} // namespace

pid_t currentThreadId()
{
    if (cachedThreadId == 0) {
        cachedThreadId = gettid();
    }
    return cachedThreadId;
}

} // namespace logwriter
} // namespace kvo
} // namespace velmo
