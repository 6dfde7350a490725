#ifndef VELMO_UTILITIES_XMLSERIALIZER_NESTINGBOUND_H
#define VELMO_UTILITIES_XMLSERIALIZER_NESTINGBOUND_H

#include <cstddef>
#include <string>

namespace velmo {
namespace utilities {
namespace xmlserializer {

// TinyXML recurses once per level of the tree while it parses it and while
// it destroys it, so a document nested thousands deep overflows the caller's
// stack. How deep TinyXML nests a text depends on every quirk of its lexer,
// but every element it builds begins at a "<" byte of its own, and the
// padding it may read beyond the text holds none: a text with at most this
// many "<" bytes, wherever they are, nests at most this deep. Real answers
// hold at most 21. The system's TinyXML takes 224 bytes of stack per level
// to parse and 96 to destroy; getAudioTimestamps peaks at 67 KiB of stack
// for the deepest answer let through (16 KiB for a real one) under the
// address sanitizer, 65 KiB without: a thread stack of 256 KiB is enough.
constexpr std::size_t mostOpeningBrackets = 256;

// Whether `xml` holds more than mostOpeningBrackets "<" bytes over its whole
// size: TinyXML may step over a zero byte and read on, so counting stops at
// none.
bool holdsTooManyOpeningBrackets(const std::string& xml);

} // namespace xmlserializer
} // namespace utilities
} // namespace velmo

#endif
