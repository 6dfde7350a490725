#include "AbortMessage.h"

// Bionic has it; glibc does not, so the reference is weak and may stay null.
extern "C" void android_set_abort_message(const char* message) __attribute__((weak));

namespace velmo {
namespace kvo {
namespace logwriter {

void recordAbortMessage(const char* message)
{
    if (android_set_abort_message != nullptr) {
        android_set_abort_message(message);
    }
}

} // namespace logwriter
} // namespace kvo
} // namespace velmo
