#ifndef AKVO_TESTS_SUPPORT_CHILDPROCESS_H
#define AKVO_TESTS_SUPPORT_CHILDPROCESS_H

#include "ProgramRun.h"

#include <functional>

// Present only when LeakSanitizer is linked in, as under AddressSanitizer.
extern "C" void __lsan_do_leak_check() __attribute__((weak));

namespace akvo {
namespace test {

// Runs `body` in a forked child and returns what it wrote and its exit
// status, which is what `body` returns; under LeakSanitizer a leak fails it.
// What the body changes in the process (the log writer's socket, the receive
// buffer, resource limits, user ids) ends with the child, so every case
// starts from the parent's state. A child still running after `timeoutMs`
// is killed.
ProgramOutput runInChild(const std::function<int()>& body, int timeoutMs = 30000);

// Runs `body` in a child as above; the GoogleTest failures it has there fail
// the calling test, with everything the child wrote.
void expectPassesInChild(const std::function<void()>& body);

} // namespace test
} // namespace akvo

#endif
