#include "velmo/utilities/xmlserializer/XmlSerializer.h"

#include "velmo/utilities/xmlserializer/NestingBound.h"

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
    if (root == nullptr) {
        return XmlResult(ConversionFailed) << "No '" << rootName << "' root element found in xml data.";
    }
    const std::string* receivedVersion = root->Attribute(std::string("version"));
    if (receivedVersion == nullptr) {
        // Fixed output: the quote is never closed.
        return XmlResult(ConversionFailed) << "No version found in root node '" << rootName;
    }
    if (*receivedVersion != version) {
        return XmlResult(ConversionFailed)
               << "Version does not match; expect '" << version << "' got '" << *receivedVersion << "'.";
    }
    if (root->NextSiblingElement() != nullptr) {
        // Fixed output, although the fault is a second top-level element.
        return XmlResult(ConversionFailed) << "No command tag found.";
    }
    command = root->FirstChildElement();
    if (command == nullptr) {
        return XmlResult(ConversionFailed) << "No content under root element.";
    }
    return XmlResult::success();
}

// TinyXML takes a UTF-8 lead byte for a whole character of up to four bytes
// and steps that far even when the text ends inside it, then reads on beyond
// the terminator. A bad answer must not make it read foreign memory, so the
// parser is given zero bytes to land on. A document that could nest too deep
// for the caller's stack is not parsed at all, and so reads as one without a
// root.
void parseDocument(TiXmlDocument& document, const std::string& xml)
{
    if (holdsTooManyOpeningBrackets(xml)) {
        return;
    }
    static const std::string::size_type longestCharacter = 4;
    std::string padded;
    padded.reserve(xml.size() + longestCharacter);
    padded.append(xml).append(longestCharacter, '\0');
    document.Parse(padded.c_str());
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
