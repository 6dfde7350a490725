// Any bytes, parsed by TinyXML as the library parses an answer but without
// the guard, then measured on the tree TinyXML actually built. The guard
// must let through exactly the answers within the count of "<" bytes, and
// what it lets through must nest within that count: every element TinyXML
// builds has a "<" of its own, whatever its lexer makes of the bytes around.
#include "Require.h"

#include "velmo/utilities/xmlserializer/NestingBound.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <tinyxml.h>

namespace {

using akvo::fuzz::require;
namespace xs = velmo::utilities::xmlserializer;

struct Shape
{
    std::size_t elements = 0;
    std::size_t deepest = 0;
};

// Without recursion, so that the oracle's own stack does not limit the trees
// it can measure. Only elements have children, so a node's level counts the
// elements above it and itself.
Shape shapeOf(const TiXmlDocument& document)
{
    Shape shape;
    std::size_t level = 1;
    const TiXmlNode* node = document.FirstChild();
    while (node != nullptr) {
        if (node->ToElement() != nullptr) {
            ++shape.elements;
            shape.deepest = std::max(shape.deepest, level);
        }
        if (node->FirstChild() != nullptr) {
            node = node->FirstChild();
            ++level;
            continue;
        }
        while (node != &document && node->NextSibling() == nullptr) {
            node = node->Parent();
            --level;
        }
        node = node == &document ? nullptr : node->NextSibling();
    }
    return shape;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string xml(reinterpret_cast<const char*>(data), size);
    const bool refused = xs::holdsTooManyOpeningBrackets(xml);
    const std::size_t brackets = static_cast<std::size_t>(std::count(xml.begin(), xml.end(), '<'));
    require(refused == (brackets > xs::mostOpeningBrackets),
            "the guard refuses exactly the answers over the count", std::to_string(brackets) + " '<'");

    // The library's padding: zero bytes for a lead byte at the end to land on.
    std::string padded(xml);
    padded.append(4, '\0');
    TiXmlDocument document;
    document.Parse(padded.c_str());
    const Shape shape = shapeOf(document);
    require(shape.elements <= brackets, "every element TinyXML builds has a '<' of its own",
            std::to_string(shape.elements) + " elements, " + std::to_string(brackets) + " '<'");
    require(refused || shape.deepest <= xs::mostOpeningBrackets,
            "what the guard lets through nests within the bound", std::to_string(shape.deepest) + " levels");
    return 0;
}
