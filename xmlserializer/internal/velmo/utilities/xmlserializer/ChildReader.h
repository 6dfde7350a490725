#ifndef VELMO_UTILITIES_XMLSERIALIZER_CHILDREADER_H
#define VELMO_UTILITIES_XMLSERIALIZER_CHILDREADER_H

#include "velmo/utilities/xmlserializer/ChildAccess.h"
#include "velmo/utilities/xmlserializer/XmlResult.h"
#include "velmo/utilities/xmlserializer/XmlTraitSerializer.h"

#include <tinyxml.h>
#include <utility>

namespace velmo {
namespace utilities {
namespace xmlserializer {

// Reads the child of `parent` that a value of kind `Trait` comes from, the
// way the layers above read the parts of an answer: into `read`, which
// starts as the caller gives it, and then into `value`, which thus changes
// only when the whole child could be read.
template <class Trait>
XmlResult readChild(const TiXmlNode& parent, typename Trait::Record read, typename Trait::Record& value)
{
    const TiXmlNode* child = nullptr;
    XmlResult result = detail::ChildAccess<Trait>::get(parent, child);
    if (result.isFailure()) {
        return result;
    }
    result = XmlTraitSerializer<Trait>::fromXml(*child, read, Trait::tag);
    if (result.isSuccess()) {
        value = std::move(read);
    }
    return result;
}

} // namespace xmlserializer
} // namespace utilities
} // namespace velmo

#endif
