#ifndef AKVO_TESTS_LOG_FRESHPROCESS_H
#define AKVO_TESTS_LOG_FRESHPROCESS_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace akvo {
namespace test {

// The log writer reads its environment at load time and keeps its socket for
// the life of the process, so some cases need a process of their own: this
// runs one disabled test of this binary ("Suite.DISABLED_Name") in a new
// process, with LIBLOG_THROUGHPUT_LIMIT removed from the environment and the
// "NAME=value" entries of `environment` added. Succeeds when that test ran
// and passed; the child's output is in the failure message.
::testing::AssertionResult passesInFreshProcess(const std::string& testName,
                                                const std::vector<std::string>& environment = {});

} // namespace test
} // namespace akvo

#endif
