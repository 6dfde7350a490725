#ifndef VELMO_KVO_CMDFRMWRK_RESULTTRAIT_H
#define VELMO_KVO_CMDFRMWRK_RESULTTRAIT_H

#include "velmo/kvo/cmdfrmwrk/Command.h"
#include "velmo/utilities/TypeList.h"
#include "velmo/utilities/result/Result.h"
#include "velmo/utilities/serializer/CastConvertor.h"
#include "velmo/utilities/serializer/Child.h"
#include "velmo/utilities/serializer/Convertor.h"
#include "velmo/utilities/serializer/NamedTextTrait.h"

#include <string>

namespace velmo {
namespace kvo {
namespace cmdfrmwrk {

// The element that carries a server result inside an answer.
template <class ResultType>
struct ResultTrait;

template <>
struct ResultTrait<velmo::utilities::result::Result<Command::ResultTrait>>
{
    using Record = velmo::utilities::result::Result<Command::ResultTrait>;

    static constexpr const char* tag = "Result";
    static constexpr char errorCode[] = "ErrorCode";
    static constexpr char message[] = "Message";

    // Any integer is taken as the code, without a range check.
    using ErrorCodeTrait = velmo::utilities::serializer::NamedTextTrait<
        Command::ResultCode, errorCode, false,
        velmo::utilities::serializer::CastConvertor<Command::ResultCode, int>>;
    // A server that has nothing to say may send an empty element.
    using MessageTrait =
        velmo::utilities::serializer::NamedTextTrait<std::string, message, true,
                                                     velmo::utilities::serializer::Convertor<std::string>>;

    static Command::ResultCode getErrorCode(const Record& result) { return result.getErrorCode(); }
    // Only the code changes: text the result already holds is kept.
    static void setErrorCode(Record& result, const Command::ResultCode& code) { result._errorCode = code; }
    static std::string getMessage(const Record& result) { return result.getMainMessage(); }
    static void appendMessage(Record& result, const std::string& text)
    {
        Record::Append<std::string>::run(result, text);
    }

    using Children = velmo::utilities::TypeListOf<
        velmo::utilities::serializer::Child<ErrorCodeTrait, decltype(&getErrorCode), &getErrorCode,
                                            decltype(&setErrorCode), &setErrorCode>,
        velmo::utilities::serializer::Child<MessageTrait, decltype(&getMessage), &getMessage,
                                            decltype(&appendMessage), &appendMessage>>;
};

using CommandResultTrait = ResultTrait<velmo::utilities::result::Result<Command::ResultTrait>>;

} // namespace cmdfrmwrk
} // namespace kvo
} // namespace velmo

#endif
