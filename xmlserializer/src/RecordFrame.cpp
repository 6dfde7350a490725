#include "velmo/utilities/xmlserializer/RecordFrame.h"

#include <cstring>
#include <string>

namespace velmo {
namespace utilities {
namespace xmlserializer {
namespace detail {

XmlResult checkElementName(const TiXmlNode& element, const char* expectedName)
{
    if (std::strcmp(expectedName, element.Value()) != 0) {
        return XmlResult(WrongXmlNode) << "Trying to deserialize the wrong element."
                                       << "Found \"" << element.Value() << "\" expected " << expectedName;
    }
    return XmlResult::success();
}

// Successes carry the suffix too; it stays unseen because a success formats
// as its code text only. Since every element of every answer gets one, it is
// appended in place, with room made once, rather than built apart and then
// streamed into a copy of the result.
void appendWhileDeserializing(XmlResult& result, const char* expectedName)
{
    // Fixed output, doubled s included.
    static const char opening[] = " (While desserializing \"";
    static const char closing[] = "\")";
    result._mainMessage.reserve(result._mainMessage.size() + sizeof(opening) - 1 + std::strlen(expectedName) +
                                sizeof(closing) - 1);
    XmlResult::Append<char[sizeof(opening)]>::run(result, opening);
    XmlResult::Append<const char*>::run(result, expectedName);
    XmlResult::Append<char[sizeof(closing)]>::run(result, closing);
}

} // namespace detail
} // namespace xmlserializer
} // namespace utilities
} // namespace velmo
