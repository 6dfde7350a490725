#include "velmo/kvo/cmdfrmwrk/Command.h"
#include "velmo/kvo/cmdfrmwrk/Peer.h"
#include "velmo/utilities/result/Result.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace {

using velmo::kvo::cmdfrmwrk::Command;
using velmo::kvo::cmdfrmwrk::Peer;
using velmo::utilities::result::Result;

template <class Trait>
std::string formatted(int code)
{
    return Result<Trait>(static_cast<typename Trait::ResultCode>(code)).format();
}

struct CodeText
{
    int code;
    const char* text;
};

void expectTexts(std::string (*format)(int), std::initializer_list<CodeText> table)
{
    for (const CodeText& entry : table) {
        EXPECT_EQ(entry.text, format(entry.code)) << entry.code;
    }
}

TEST(ResultTexts, Command)
{
    expectTexts(&formatted<Command::ResultTrait>, {{1000, "Success"},
                                                   {1001, "Unknown error (Code 1001)"},
                                                   {1002, "Invalid parameter (Code 1002)"},
                                                   {1003, "Bad state (Code 1003)"},
                                                   {1004, "Invalid error (Unreachable) (Code 1004)"},
                                                   {999, "Invalid error (Unreachable) (Code 999)"}});
}

TEST(ResultTexts, Peer)
{
    expectTexts(&formatted<Peer::ResultTrait>, {{5900, "Success"},
                                                {5901, "Unknown error (Code 5901)"},
                                                {5902, "Protocol error (Code 5902)"},
                                                {5903, "Serializer error (Code 5903)"},
                                                {5904, "Connection closed (Code 5904)"},
                                                {5905, "Connection closed by distant (Code 5905)"},
                                                {5906, "Invalid error (Unreachable) (Code 5906)"}});
}

} // namespace
