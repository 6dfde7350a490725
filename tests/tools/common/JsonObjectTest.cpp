#include "JsonObject.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using namespace std::string_literals;
using velmo::kvo::tools::JsonObject;
using velmo::kvo::tools::jsonString;

namespace {

class JsonText : public ::testing::TestWithParam<std::pair<std::string, std::string>>
{
};

// Whatever bytes a text holds, the literal is valid UTF-8 and one line.
TEST_P(JsonText, IsOneValidLiteral)
{
    EXPECT_EQ(GetParam().second, jsonString(GetParam().first));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, JsonText,
    ::testing::Values(std::make_pair(""s, R"("")"s), std::make_pair("plain /path"s, R"("plain /path")"s),
                      std::make_pair("\"\\"s, R"("\"\\")"s),
                      std::make_pair("\n\r\t\x01\x1f\x7f"s, R"("\n\r\t\u0001\u001f\u007f")"s),
                      std::make_pair("\0"s, R"("\u0000")"s),
                      std::make_pair("\xe2\x82\xac \xf4\x8f\xbf\xbf"s, "\"\xe2\x82\xac \xf4\x8f\xbf\xbf\""s),
                      // A lone byte, a cut sequence, an overlong form, a surrogate, past U+10FFFF.
                      std::make_pair("/tmp/\xff"s, R"("/tmp/\ufffd")"s),
                      std::make_pair("\xe2\x82!"s, R"("\ufffd\ufffd!")"s),
                      std::make_pair("\xc0\x80"s, R"("\ufffd\ufffd")"s),
                      std::make_pair("\xed\xa0\x80"s, R"("\ufffd\ufffd\ufffd")"s),
                      std::make_pair("\xf4\x90\x80\x80"s, R"("\ufffd\ufffd\ufffd\ufffd")"s)));

TEST(JsonObject, KeepsTheMembersInTheirOrder)
{
    EXPECT_EQ("{}", JsonObject().line());
    EXPECT_EQ(R"({"a":"x","b\n":-1,"c":18446744073709551615,"d":[]})",
              JsonObject().text("a", "x").number("b\n", -1).number("c", ~0ull).raw("d", "[]").line());
}

} // namespace
