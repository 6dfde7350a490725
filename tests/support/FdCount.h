#ifndef AKVO_TESTS_SUPPORT_FDCOUNT_H
#define AKVO_TESTS_SUPPORT_FDCOUNT_H

namespace akvo {
namespace test {

// Number of descriptors the process holds, read from /proc/self/fd.
int openDescriptorCount();

} // namespace test
} // namespace akvo

#endif
