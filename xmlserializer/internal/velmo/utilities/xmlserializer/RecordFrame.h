#ifndef VELMO_UTILITIES_XMLSERIALIZER_RECORDFRAME_H
#define VELMO_UTILITIES_XMLSERIALIZER_RECORDFRAME_H

#include "velmo/utilities/xmlserializer/XmlResult.h"

#include <tinyxml.h>

namespace velmo {
namespace utilities {
namespace xmlserializer {
namespace detail {
XmlResult checkElementName(const TiXmlNode& element, const char* expectedName);
void appendWhileDeserializing(XmlResult& result, const char* expectedName);
} // namespace detail

// The frame around every element reader: the element must carry the expected
// name, and whatever `readContent` gives is then suffixed with that name, so a
// failure deep in a document names each enclosing element, innermost first.
template <class ReadContent>
XmlResult readFramed(const TiXmlNode& element, const char* expectedName, ReadContent readContent)
{
    XmlResult result = detail::checkElementName(element, expectedName);
    if (result.isFailure()) {
        return result;
    }
    result = readContent();
    detail::appendWhileDeserializing(result, expectedName);
    return result;
}

} // namespace xmlserializer
} // namespace utilities
} // namespace velmo

#endif
