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
// as its code text only.
void appendWhileDeserializing(XmlResult& result, const char* expectedName)
{
    result << (std::string(" (While desserializing \"") + expectedName + "\")");
}

} // namespace detail
} // namespace xmlserializer
} // namespace utilities
} // namespace velmo
