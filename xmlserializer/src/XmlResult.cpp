#include "velmo/utilities/xmlserializer/XmlResult.h"

namespace velmo {
namespace utilities {
namespace xmlserializer {
namespace detail {

const char* ResultTrait::toString(ResultCode code)
{
    switch (code) {
    case Success:
        return "Success";
    case UnknownError:
        return "Unknown error";
    case WrongXmlNode:
        return "Wrong XML node";
    case ChildNotFound:
        return "Child not found";
    case UnexpectedNodeType:
        return "Unexpected node type";
    case ConversionFailed:
        return "Conversion failed";
    case InvalidArgument:
        return "Invalid argument";
    case InputStreamIsInvalid:
        return "Input stream is invalid";
    }
    return "Invalid error (Unreachable)";
}

} // namespace detail
} // namespace xmlserializer
} // namespace utilities
} // namespace velmo
