#ifndef VELMO_UTILITIES_XMLSERIALIZER_SERIALIZERCHILDLIST_H
#define VELMO_UTILITIES_XMLSERIALIZER_SERIALIZERCHILDLIST_H

#include "velmo/utilities/TypeList.h"
#include "velmo/utilities/xmlserializer/ChildAccess.h"
#include "velmo/utilities/xmlserializer/XmlResult.h"

#include <tinyxml.h>

namespace velmo {
namespace utilities {
namespace xmlserializer {

template <class Trait>
struct XmlTraitSerializer;

namespace detail {

// Reads the members of a record in list order. Each member is stored as soon
// as it is read, so after a failure the record keeps the members before it.
template <class Record, class List>
struct SerializerChildList;

template <class Record>
struct SerializerChildList<Record, TypeListOf<>>
{
    static XmlResult fromXml(const TiXmlNode&, Record&) { return XmlResult::success(); }
};

template <class Record, class Head, class Tail>
struct SerializerChildList<Record, TypeList<Head, Tail>>
{
    static XmlResult fromXml(const TiXmlNode& element, Record& value)
    {
        using ChildTrait = typename Head::Trait;
        const TiXmlNode* child = nullptr;
        XmlResult result = ChildAccess<ChildTrait>::get(element, child);
        if (result.isFailure()) {
            return result;
        }
        typename Head::ValueType member = typename Head::ValueType();
        result = XmlTraitSerializer<ChildTrait>::fromXml(*child, member, ChildTrait::tag);
        if (result.isFailure()) {
            return result;
        }
        Head::set(value, member);
        return SerializerChildList<Record, Tail>::fromXml(element, value);
    }
};

} // namespace detail
} // namespace xmlserializer
} // namespace utilities
} // namespace velmo

#endif
