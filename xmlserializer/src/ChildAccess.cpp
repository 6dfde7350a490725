#include "velmo/utilities/xmlserializer/ChildAccess.h"

namespace velmo {
namespace utilities {
namespace xmlserializer {
namespace detail {

namespace {

// Comments and elements ahead of the text are skipped.
const TiXmlNode* firstTextChild(const TiXmlNode& parent)
{
    const TiXmlNode* child = parent.FirstChild();
    while (child != nullptr && child->Type() != TiXmlNode::TINYXML_TEXT) {
        child = child->NextSibling();
    }
    return child;
}

} // namespace

XmlResult findTextChild(const TiXmlNode& parent, const TiXmlNode*& child)
{
    child = firstTextChild(parent);
    if (child != nullptr) {
        return XmlResult::success();
    }
    return XmlResult(ChildNotFound) << "Node \"" << parent.Value()
                                    << "\" does not contain an expected text node child";
}

bool hasTextChild(const TiXmlNode& parent)
{
    return firstTextChild(parent) != nullptr;
}

XmlResult findChildElement(const TiXmlNode& parent, const char* tag, const TiXmlNode*& child)
{
    child = parent.FirstChildElement(tag);
    if (child == nullptr) {
        return XmlResult(ChildNotFound)
               << "No element node \"" << tag << "\" found in node \"" << parent.Value() << '"';
    }
    return XmlResult::success();
}

} // namespace detail
} // namespace xmlserializer
} // namespace utilities
} // namespace velmo
