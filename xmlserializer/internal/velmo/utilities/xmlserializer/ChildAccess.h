#ifndef VELMO_UTILITIES_XMLSERIALIZER_CHILDACCESS_H
#define VELMO_UTILITIES_XMLSERIALIZER_CHILDACCESS_H

#include "velmo/utilities/serializer/TextTrait.h"
#include "velmo/utilities/xmlserializer/XmlResult.h"

#include <tinyxml.h>

namespace velmo {
namespace utilities {
namespace xmlserializer {
namespace detail {

XmlResult findTextChild(const TiXmlNode& parent, const TiXmlNode*& child);
bool hasTextChild(const TiXmlNode& parent);
XmlResult findChildElement(const TiXmlNode& parent, const char* tag, const TiXmlNode*& child);

// Finds the node a value of kind `Trait` is read from: by default the first
// child element named after the trait's tag. The name is fixed by the design
// and stays in detail; the layers above read a child through readChild.
template <class Trait>
struct ChildAccess
{
    static XmlResult get(const TiXmlNode& parent, const TiXmlNode*& child)
    {
        return findChildElement(parent, Trait::tag, child);
    }
};

template <class T, class Conv>
struct ChildAccess<serializer::TextTrait<T, Conv>>
{
    static XmlResult get(const TiXmlNode& parent, const TiXmlNode*& child)
    {
        return findTextChild(parent, child);
    }
};

} // namespace detail
} // namespace xmlserializer
} // namespace utilities
} // namespace velmo

#endif
