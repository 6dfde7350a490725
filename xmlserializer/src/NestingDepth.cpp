#include "NestingDepth.h"

#include <algorithm>
#include <cstring>

namespace velmo {
namespace utilities {
namespace xmlserializer {
namespace detail {

namespace {

// The parser opens an element only for "<" followed by a letter, an
// underscore or a byte of a multi-byte UTF-8 character.
bool startsElementName(unsigned char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c >= 0x80;
}

bool startsWith(const char* at, const char* end, const char* literal)
{
    const std::size_t length = std::strlen(literal);
    return static_cast<std::size_t>(end - at) >= length && std::memcmp(at, literal, length) == 0;
}

// Just past the first `terminator` at or after `from`, or `end`.
const char* after(const char* from, const char* end, const char* terminator)
{
    const char* const terminatorEnd = terminator + std::strlen(terminator);
    const char* const found = std::search(from, end, terminator, terminatorEnd);
    return found == end ? end : found + (terminatorEnd - terminator);
}

// Just past the ">" that ends the tag starting at `from`; quoted attribute
// values may hold ">" and are stepped over whole. `selfClosing` tells a tag
// written as "<name/>".
const char* afterTag(const char* from, const char* end, bool& selfClosing)
{
    char previous = '\0';
    for (const char* at = from; at < end; ++at) {
        if (*at == '"' || *at == '\'') {
            const char* close =
                static_cast<const char*>(std::memchr(at + 1, *at, static_cast<std::size_t>(end - at - 1)));
            if (close == nullptr) {
                return end;
            }
            at = close;
        } else if (*at == '>') {
            selfClosing = previous == '/';
            return at + 1;
        }
        previous = *at;
    }
    return end;
}

} // namespace

bool nestsDeeperThan(const std::string& xml, std::size_t limit)
{
    const char* at = xml.c_str();
    const char* const end = at + std::strlen(at);
    std::size_t depth = 0;
    while ((at = static_cast<const char*>(std::memchr(at, '<', static_cast<std::size_t>(end - at)))) !=
           nullptr) {
        if (startsWith(at, end, "<!--")) {
            at = after(at + 4, end, "-->");
        } else if (startsWith(at, end, "<![CDATA[")) {
            at = after(at + 9, end, "]]>");
        } else if (startsWith(at, end, "</")) {
            depth -= depth > 0 ? 1 : 0;
            at = after(at + 2, end, ">");
        } else if (at + 1 < end && startsElementName(static_cast<unsigned char>(at[1]))) {
            bool selfClosing = false;
            at = afterTag(at + 1, end, selfClosing);
            if (!selfClosing && ++depth > limit) {
                return true;
            }
        } else {
            // Declarations, document types and stray "<": nothing nests in them.
            at = after(at + 1, end, ">");
        }
    }
    return false;
}

} // namespace detail
} // namespace xmlserializer
} // namespace utilities
} // namespace velmo
