#include "velmo/utilities/result/Result.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

using velmo::utilities::result::Result;

namespace {

// The texts of the service, peer and protocol families that the cases use.
const char* textOf(int32_t code)
{
    static const std::map<int32_t, const char*> texts = {
        {1000, "Success"},        {5900, "Success"},
        {40000, "Success"},       {1003, "Bad state"},
        {5902, "Protocol error"}, {1005, "An error has occured in the transport layer"},
        {40003, "Link error"},    {40004, "Protocol is closed."}};
    const auto text = texts.find(code);
    return text != texts.end() ? text->second : "Invalid error (Unreachable)";
}

template <int32_t Success>
struct Family
{
    enum ResultCode : int32_t
    {
        successCode = Success
    };
    static const char* toString(ResultCode code) { return textOf(code); }
};

using ServiceResult = Result<Family<1000>>;
using PeerResult = Result<Family<5900>>;
using ProtocolResult = Result<Family<40000>>;

template <class R>
R make(int32_t code)
{
    return R(static_cast<typename R::ResultCode>(code));
}

struct RenderingCase
{
    const char* name;
    std::function<std::string()> render;
    std::string expected;
};

class Rendering : public ::testing::TestWithParam<RenderingCase>
{
};

TEST_P(Rendering, IsExact)
{
    EXPECT_EQ(GetParam().expected, GetParam().render());
}

INSTANTIATE_TEST_SUITE_P(
    Results, Rendering,
    ::testing::Values(
        RenderingCase{"codeOnly", [] { return make<ServiceResult>(1003).format(); }, "Bad state (Code 1003)"},
        RenderingCase{
            "piecesWithoutSeparator",
            [] {
                return (make<ServiceResult>(1003) << "a" << std::string("b") << 'c' << ULLONG_MAX).format();
            },
            "Bad state (Code 1003): abc18446744073709551615"},
        RenderingCase{
            "twoNestedJoined",
            [] {
                return (make<PeerResult>(5902) << make<ProtocolResult>(40003) << make<ProtocolResult>(40004))
                    .format();
            },
            "Protocol error (Code 5902): {Link error (Code 40003) && Protocol is closed. (Code 40004)}"},
        RenderingCase{"nestedSuccessIsKept",
                      [] { return (make<PeerResult>(5902) << ProtocolResult::success()).format(); },
                      "Protocol error (Code 5902): {Success}"},
        RenderingCase{"unknownCode", [] { return make<ServiceResult>(1099).format(); },
                      "Invalid error (Unreachable) (Code 1099)"},
        RenderingCase{"trailingMessageLast",
                      [] {
                          ServiceResult result = make<ServiceResult>(1003) << "main";
                          result._trailingMessage = "!";
                          return result.format();
                      },
                      "Bad state (Code 1003): main!"}),
    [](const ::testing::TestParamInfo<RenderingCase>& info) { return std::string(info.param.name); });

TEST(ResultChaining, WithASuccessKeepsNothingOfTheLowerResult)
{
    const PeerResult result(make<ProtocolResult>(40000) << "text", PeerResult::ResultCode(5902),
                            PeerResult::ResultCode(5900));
    EXPECT_EQ(5900, result.getErrorCode());
    EXPECT_EQ("", result._mainMessage + result._trailingMessage + result._nestedResults);
}

// Each insertion works on the copy that the previous one returned.
TEST(ResultStreaming, AChainAsAStatementLeavesOnlyItsFirstValue)
{
    ServiceResult result = make<ServiceResult>(1003);
    result << "first"
           << "second" << make<ProtocolResult>(40003);
    EXPECT_EQ("Bad state (Code 1003): first", result.format());
}

TEST(ResultSuccess, IsOneSharedObjectAcrossThreads)
{
    // A family of its own, so that the threads race for its first use.
    using RacedResult = Result<Family<7>>;
    std::vector<const RacedResult*> seen(8);
    std::vector<std::thread> threads;
    for (auto& slot : seen) {
        threads.emplace_back([&slot] { slot = &RacedResult::success(); });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (const RacedResult* result : seen) {
        EXPECT_EQ(&RacedResult::success(), result);
    }
    EXPECT_EQ(7, seen[0]->getErrorCode());
}

} // namespace
