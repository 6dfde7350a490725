#ifndef VELMO_UTILITIES_XMLSERIALIZER_XMLRESULT_H
#define VELMO_UTILITIES_XMLSERIALIZER_XMLRESULT_H

#include "velmo/utilities/result/Result.h"

#include <cstdint>

namespace velmo {
namespace utilities {
namespace xmlserializer {

// Success is 66, not 0, so that the family's codes form a block of their own.
enum ResultCode : int32_t
{
    Success = 66,
    UnknownError = 67,
    WrongXmlNode = 68,
    ChildNotFound = 69,
    UnexpectedNodeType = 70,
    ConversionFailed = 71,
    InvalidArgument = 72,
    InputStreamIsInvalid = 73
};

namespace detail {

struct ResultTrait
{
    using ResultCode = xmlserializer::ResultCode;
    static constexpr ResultCode successCode = Success;
    static const char* toString(ResultCode code);
};

} // namespace detail

using XmlResult = result::Result<detail::ResultTrait>;

} // namespace xmlserializer
} // namespace utilities
} // namespace velmo

#endif
