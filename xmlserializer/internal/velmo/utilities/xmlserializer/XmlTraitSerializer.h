#ifndef VELMO_UTILITIES_XMLSERIALIZER_XMLTRAITSERIALIZER_H
#define VELMO_UTILITIES_XMLSERIALIZER_XMLTRAITSERIALIZER_H

#include "velmo/utilities/serializer/NamedTextTrait.h"
#include "velmo/utilities/serializer/TextTrait.h"
#include "velmo/utilities/xmlserializer/ChildAccess.h"
#include "velmo/utilities/xmlserializer/RecordFrame.h"
#include "velmo/utilities/xmlserializer/SerializerChildList.h"
#include "velmo/utilities/xmlserializer/XmlResult.h"

#include <string>
#include <tinyxml.h>

namespace velmo {
namespace utilities {
namespace xmlserializer {

// By default a trait describes a record: an element named `Trait::tag` whose
// members, listed in `Trait::Children`, are child elements of it.
template <class Trait>
struct XmlTraitSerializer
{
    static XmlResult fromXml(const TiXmlNode& element, typename Trait::Record& value,
                             const char* expectedName)
    {
        return readFramed(element, expectedName, [&] {
            return detail::SerializerChildList<typename Trait::Record, typename Trait::Children>::fromXml(
                element, value);
        });
    }
};

template <class T, class Conv>
struct XmlTraitSerializer<serializer::TextTrait<T, Conv>>
{
    static XmlResult toXml(const T& value, TiXmlNode*& node)
    {
        std::string text;
        if (!Conv::toString(value, text)) {
            return XmlResult(ConversionFailed)
                   << "Unable to convert \"" << static_cast<const void*>(&value) << "\" to string.";
        }
        node = new TiXmlText(text);
        return XmlResult::success();
    }

    static XmlResult fromXml(const TiXmlNode* node, T& value)
    {
        if (node == nullptr || node->Type() != TiXmlNode::TINYXML_TEXT) {
            return XmlResult(UnexpectedNodeType) << "Expected an xml text node";
        }
        const std::string& text = node->ValueStr();
        if (!Conv::fromString(text, value)) {
            return XmlResult(ConversionFailed) << "Unable to convert from string \"" << text << "\".";
        }
        return XmlResult::success();
    }
};

template <class T, const char* tagVariable, bool allowMissingText, class Conv>
struct XmlTraitSerializer<serializer::NamedTextTrait<T, tagVariable, allowMissingText, Conv>>
{
    static XmlResult fromXml(const TiXmlNode& element, T& value, const char* expectedName)
    {
        return readFramed(element, expectedName, [&] { return readText(element, value); });
    }

private:
    static XmlResult readText(const TiXmlNode& element, T& value)
    {
        using Text = serializer::TextTrait<T, Conv>;
        // An element that may be empty, as a server's message mostly is, is
        // looked at first: the text of a missing node is built only when the
        // failure is kept.
        if (allowMissingText && !detail::hasTextChild(element)) {
            value = T();
            return XmlResult::success();
        }
        const TiXmlNode* textNode = nullptr;
        XmlResult result = detail::ChildAccess<Text>::get(element, textNode);
        if (result.isSuccess()) {
            T converted = T();
            result = XmlTraitSerializer<Text>::fromXml(textNode, converted);
            if (result.isSuccess()) {
                value = converted;
            }
        }
        return result;
    }
};

} // namespace xmlserializer
} // namespace utilities
} // namespace velmo

#endif
