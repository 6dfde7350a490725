#include "velmo/utilities/result/Result.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

using velmo::utilities::result::ErrnoTrait;
using velmo::utilities::result::Result;

TEST(ErrnoResult, FormatsWithTheCLibraryText)
{
    Result<ErrnoTrait> result(ECONNRESET);
    EXPECT_EQ(std::string(std::strerror(ECONNRESET)) + " (Code 104)", result.format());
}
