#ifndef VELMO_UTILITIES_XMLSERIALIZER_XMLSERIALIZER_H
#define VELMO_UTILITIES_XMLSERIALIZER_XMLSERIALIZER_H

#include "velmo/utilities/xmlserializer/TraitOf.h"
#include "velmo/utilities/xmlserializer/XmlResult.h"
#include "velmo/utilities/xmlserializer/XmlTraitSerializer.h"

#include <string>
#include <tinyxml.h>

namespace velmo {
namespace utilities {
namespace xmlserializer {

namespace detail {

XmlResult findCommandElement(const TiXmlDocument& document, const std::string& rootName,
                             const std::string& version, const TiXmlElement*& command);
std::string printCompactly(const TiXmlDocument& document);
void parseDocument(TiXmlDocument& document, const std::string& xml);

} // namespace detail

// Wraps one command in a versioned envelope: a declaration, a root element
// carrying the version, and the command element inside it. `List` holds the
// traits of every request and answer the serializer knows; each record's
// trait is picked from it at compile time. A request trait gives its
// `Record`, its `tag` and `writePayload`, which leaves the node null when the
// request has no payload; an answer trait is read by its XmlTraitSerializer.
template <class List>
class XmlSerializer
{
public:
    XmlSerializer(const std::string& rootName, const std::string& version)
        : _rootName(rootName), _version(version)
    {
    }

    template <class Request>
    XmlResult serialize(const Request& request, std::string& xml) const
    {
        using Trait = typename detail::TraitOf<Request, List>::type;
        TiXmlDocument document;
        document.LinkEndChild(new TiXmlDeclaration("1.0", "", ""));
        TiXmlElement root(_rootName);
        root.SetAttribute("version", _version);
        TiXmlElement* command = new TiXmlElement(Trait::tag);
        TiXmlNode* payload = nullptr;
        XmlResult result = Trait::writePayload(request, payload);
        if (result.isFailure()) {
            delete command;
            xml.clear();
            return result << (std::string(" (While serializing \"") + Trait::tag + "\")");
        }
        if (payload != nullptr) {
            command->LinkEndChild(payload);
        }
        root.LinkEndChild(command);
        document.InsertEndChild(root);
        xml = detail::printCompactly(document);
        return XmlResult::success();
    }

    template <class Answer>
    XmlResult deserialize(const std::string& xml, Answer& answer) const
    {
        using Trait = typename detail::TraitOf<Answer, List>::type;
        TiXmlDocument document;
        detail::parseDocument(document, xml);
        const TiXmlElement* command = nullptr;
        XmlResult result = detail::findCommandElement(document, _rootName, _version, command);
        if (result.isFailure()) {
            return result;
        }
        return XmlTraitSerializer<Trait>::fromXml(*command, answer, Trait::tag);
    }

private:
    std::string _rootName;
    std::string _version;
};

} // namespace xmlserializer
} // namespace utilities
} // namespace velmo

#endif
