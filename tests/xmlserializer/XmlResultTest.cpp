#include "velmo/utilities/xmlserializer/XmlResult.h"
#include "velmo/utilities/result/Result.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using velmo::utilities::xmlserializer::ResultCode;
using velmo::utilities::xmlserializer::XmlResult;

TEST(XmlResult, EachCodeHasItsText)
{
    const struct
    {
        int code;
        const char* text;
    } table[] = {{66, "Success"},
                 {67, "Unknown error (Code 67)"},
                 {68, "Wrong XML node (Code 68)"},
                 {69, "Child not found (Code 69)"},
                 {70, "Unexpected node type (Code 70)"},
                 {71, "Conversion failed (Code 71)"},
                 {72, "Invalid argument (Code 72)"},
                 {73, "Input stream is invalid (Code 73)"},
                 {0, "Invalid error (Unreachable) (Code 0)"},
                 {74, "Invalid error (Unreachable) (Code 74)"}};
    for (const auto& entry : table) {
        EXPECT_EQ(entry.text, XmlResult(static_cast<ResultCode>(entry.code)).format()) << entry.code;
    }
}

} // namespace
