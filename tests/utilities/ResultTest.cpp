#include "velmo/utilities/result/Result.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

using velmo::utilities::result::ErrnoTrait;
using velmo::utilities::result::Result;

namespace {

const char* const invalidText = "Invalid error (Unreachable)";

// Three families shaped like the library's transport, command and service
// layers, with their code blocks and texts.
struct ProtocolTrait
{
    enum ResultCode : int32_t
    {
        Success = 40000,
        LinkError = 40003,
        Closed = 40004
    };
    static constexpr ResultCode successCode = Success;
    static const char* toString(ResultCode code)
    {
        return code == Success     ? "Success"
               : code == LinkError ? "Link error"
               : code == Closed    ? "Protocol is closed."
                                   : invalidText;
    }
};

struct PeerTrait
{
    enum ResultCode : int32_t
    {
        Success = 5900,
        ProtocolError = 5902
    };
    static constexpr ResultCode successCode = Success;
    static const char* toString(ResultCode code)
    {
        return code == Success ? "Success" : code == ProtocolError ? "Protocol error" : invalidText;
    }
};

struct ServiceTrait
{
    enum ResultCode : int32_t
    {
        Success = 1000,
        BadState = 1003,
        TransportError = 1005
    };
    static constexpr ResultCode successCode = Success;
    static const char* toString(ResultCode code)
    {
        return code == Success          ? "Success"
               : code == BadState       ? "Bad state"
               : code == TransportError ? "An error has occured in the transport layer"
                                        : invalidText;
    }
};

typedef Result<ProtocolTrait> ProtocolResult;
typedef Result<PeerTrait> PeerResult;
typedef Result<ServiceTrait> ServiceResult;

struct RenderingCase
{
    const char* name;
    std::function<std::string()> render;
    std::string expected;
};

void PrintTo(const RenderingCase& c, std::ostream* out)
{
    *out << c.name;
}

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
        RenderingCase{"successIgnoresItsText",
                      [] { return (ServiceResult(ServiceTrait::Success) << "ignored").format(); }, "Success"},
        RenderingCase{"codeOnly", [] { return ServiceResult(ServiceTrait::BadState).format(); },
                      "Bad state (Code 1003)"},
        RenderingCase{
            "mainMessage",
            [] {
                return (ServiceResult(ServiceTrait::BadState) << "Not connected to the audio KVO").format();
            },
            "Bad state (Code 1003): Not connected to the audio KVO"},
        RenderingCase{"piecesWithoutSeparator",
                      [] {
                          return (ServiceResult(ServiceTrait::BadState)
                                  << "a" << std::string("b") << 'c' << 12ULL)
                              .format();
                      },
                      "Bad state (Code 1003): abc12"},
        RenderingCase{
            "twoNestedJoined",
            [] {
                return (PeerResult(PeerTrait::ProtocolError)
                        << ProtocolResult(ProtocolTrait::LinkError) << ProtocolResult(ProtocolTrait::Closed))
                    .format();
            },
            "Protocol error (Code 5902): {Link error (Code 40003) && Protocol is closed. (Code 40004)}"},
        RenderingCase{"messageThenNested",
                      [] {
                          return (PeerResult(PeerTrait::ProtocolError)
                                  << "while sending" << ProtocolResult(ProtocolTrait::LinkError))
                              .format();
                      },
                      "Protocol error (Code 5902): while sending {Link error (Code 40003)}"},
        RenderingCase{
            "nestedSuccessIsKept",
            [] { return (PeerResult(PeerTrait::ProtocolError) << ProtocolResult::success()).format(); },
            "Protocol error (Code 5902): {Success}"},
        RenderingCase{
            "chainedThreeLayers",
            [] {
                const PeerResult peer(ProtocolResult(ProtocolTrait::LinkError), PeerTrait::ProtocolError,
                                      PeerTrait::Success);
                return ServiceResult(peer, ServiceTrait::TransportError, ServiceTrait::Success).format();
            },
            "An error has occured in the transport layer (Code 1005): {Protocol error (Code 5902): {Link "
            "error (Code 40003)}}"},
        RenderingCase{"unknownCode",
                      [] { return ServiceResult(static_cast<ServiceTrait::ResultCode>(1099)).format(); },
                      "Invalid error (Unreachable) (Code 1099)"},
        RenderingCase{"negativeCode",
                      [] { return ServiceResult(static_cast<ServiceTrait::ResultCode>(-7)).format(); },
                      "Invalid error (Unreachable) (Code -7)"},
        RenderingCase{"largestUnsignedLongLong",
                      [] { return (ServiceResult(ServiceTrait::BadState) << ULLONG_MAX).getMainMessage(); },
                      "18446744073709551615"},
        RenderingCase{"charIsOneCharacter",
                      [] { return (ServiceResult(ServiceTrait::BadState) << 'x').getMainMessage(); }, "x"},
        RenderingCase{"nestedOnlyMainMessage",
                      [] {
                          return (PeerResult(PeerTrait::ProtocolError)
                                  << ProtocolResult(ProtocolTrait::LinkError))
                              .getMainMessage();
                      },
                      "{Link error (Code 40003)}"},
        RenderingCase{"trailingMessageLast",
                      [] {
                          ServiceResult result = ServiceResult(ServiceTrait::BadState) << "main";
                          result._trailingMessage = "!";
                          return result.format();
                      },
                      "Bad state (Code 1003): main!"},
        RenderingCase{"trailingMessageWithoutMain",
                      [] {
                          ServiceResult result(ServiceTrait::BadState);
                          result._trailingMessage = "!";
                          return result.format();
                      },
                      "Bad state (Code 1003)!"},
        RenderingCase{"errnoSuccess", [] { return Result<ErrnoTrait>(0).format(); }, "Success"},
        RenderingCase{"errnoCode", [] { return Result<ErrnoTrait>(ECONNRESET).format(); },
                      std::string(std::strerror(ECONNRESET)) + " (Code 104)"}),
    [](const ::testing::TestParamInfo<RenderingCase>& info) { return std::string(info.param.name); });

TEST(ResultChaining, WithASuccessKeepsNothingOfTheLowerResult)
{
    const ProtocolResult lower = ProtocolResult(ProtocolTrait::Success) << "text";
    const PeerResult result(lower, PeerTrait::ProtocolError, PeerTrait::Success);
    EXPECT_EQ(PeerTrait::Success, result.getErrorCode());
    EXPECT_TRUE(result.isSuccess());
    EXPECT_EQ("", result._mainMessage);
    EXPECT_EQ("", result._trailingMessage);
    EXPECT_EQ("", result._nestedResults);
}

TEST(ResultChaining, WithAFailureTakesTheErrorCode)
{
    const PeerResult result(ProtocolResult(ProtocolTrait::Closed), PeerTrait::ProtocolError,
                            PeerTrait::Success);
    EXPECT_EQ(PeerTrait::ProtocolError, result.getErrorCode());
    EXPECT_TRUE(result.isFailure());
    EXPECT_EQ("", result._mainMessage);
    EXPECT_EQ("Protocol is closed. (Code 40004)", result._nestedResults);
}

// Each insertion works on the copy that the previous one returned.
TEST(ResultStreaming, AChainAsAStatementLeavesOnlyItsFirstValue)
{
    ServiceResult result(ServiceTrait::BadState);
    result << "first"
           << "second" << ProtocolResult(ProtocolTrait::LinkError);
    EXPECT_EQ("first", result._mainMessage);
    EXPECT_EQ("", result._nestedResults);
}

TEST(ResultAssignment, CopiesEverythingAndSurvivesSelfAssignment)
{
    ServiceResult source = ServiceResult(ServiceTrait::BadState)
                           << "main" << ProtocolResult(ProtocolTrait::Closed);
    source._trailingMessage = "!";
    ServiceResult target(ServiceTrait::Success);
    target = source;
    EXPECT_EQ(source.format(), target.format());
    EXPECT_EQ("Bad state (Code 1003): main {Protocol is closed. (Code 40004)}!", target.format());

    ServiceResult& alias = target;
    target = alias;
    EXPECT_EQ(source.format(), target.format());
}

// A family used by no other test, so that the threads race for its first use.
struct RacedTrait
{
    enum ResultCode : int32_t
    {
        Success = 7
    };
    static constexpr ResultCode successCode = Success;
    static const char* toString(ResultCode) { return "Success"; }
};

TEST(ResultSuccess, IsOneSharedObjectBuiltOnceAcrossThreads)
{
    std::vector<const Result<RacedTrait>*> seen(8);
    std::vector<std::thread> threads;
    for (auto& slot : seen) {
        threads.emplace_back([&slot] { slot = &Result<RacedTrait>::success(); });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(1u, std::set<const Result<RacedTrait>*>(seen.begin(), seen.end()).size());
    EXPECT_EQ(seen[0], &Result<RacedTrait>::success());
    EXPECT_TRUE(seen[0]->isSuccess());
    EXPECT_EQ(RacedTrait::Success, seen[0]->getErrorCode());
    EXPECT_EQ("", seen[0]->_mainMessage);
}

} // namespace
