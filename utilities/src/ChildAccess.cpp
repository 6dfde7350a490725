#include "velmo/utilities/xmlserializer/ChildAccess.h"

namespace velmo {
namespace utilities {
namespace xmlserializer {
namespace detail {

// Comments and elements ahead of the text are skipped.
XmlResult findTextChild(const TiXmlNode& parent, const TiXmlNode*& child)
{
    for (child = parent.FirstChild(); child != NULL; child = child->NextSibling()) {
        if (child->Type() == TiXmlNode::TINYXML_TEXT) {
            return XmlResult::success();
        }
    }
    return XmlResult(ChildNotFound) << "Node \"" << parent.Value()
                                    << "\" does not contain an expected text node child";
}

XmlResult findChildElement(const TiXmlNode& parent, const char* tag, const TiXmlNode*& child)
{
    child = parent.FirstChildElement(tag);
    if (child == NULL) {
        return XmlResult(ChildNotFound)
               << "No element node \"" << tag << "\" found in node \"" << parent.Value() << '"';
    }
    return XmlResult::success();
}

} // namespace detail
} // namespace xmlserializer
} // namespace utilities
} // namespace velmo
