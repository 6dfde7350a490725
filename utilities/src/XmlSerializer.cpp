#include "velmo/utilities/xmlserializer/XmlSerializer.h"

namespace velmo {
namespace utilities {
namespace xmlserializer {
namespace detail {

// Parse errors are not looked at: a broken document shows up as a missing
// root. Every envelope failure shares one code, so only the text tells them
// apart.
XmlResult findCommandElement(const TiXmlDocument& document, const std::string& rootName,
                             const std::string& version, const TiXmlElement*& command)
{
    const TiXmlElement* root = document.FirstChildElement(rootName);
    if (root == NULL) {
        return XmlResult(ConversionFailed) << "No '" << rootName << "' root element found in xml data.";
    }
    const std::string* receivedVersion = root->Attribute(std::string("version"));
    if (receivedVersion == NULL) {
        return XmlResult(ConversionFailed) << "No version found in root node '" << rootName;
    }
    if (*receivedVersion != version) {
        return XmlResult(ConversionFailed)
               << "Version does not match; expect '" << version << "' got '" << *receivedVersion << "'.";
    }
    if (root->NextSiblingElement() != NULL) {
        return XmlResult(ConversionFailed) << "No command tag found.";
    }
    command = root->FirstChildElement();
    if (command == NULL) {
        return XmlResult(ConversionFailed) << "No content under root element.";
    }
    return XmlResult::success();
}

std::string printCompactly(const TiXmlDocument& document)
{
    TiXmlPrinter printer;
    printer.SetStreamPrinting();
    document.Accept(&printer);
    return printer.Str();
}

} // namespace detail
} // namespace xmlserializer
} // namespace utilities
} // namespace velmo
