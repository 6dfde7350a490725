#ifndef VELMO_UTILITIES_SERIALIZER_TEXTTRAIT_H
#define VELMO_UTILITIES_SERIALIZER_TEXTTRAIT_H

namespace velmo {
namespace utilities {
namespace serializer {

// A value held as the text content of a node.
template <class T, class Conv>
struct TextTrait
{
};

} // namespace serializer
} // namespace utilities
} // namespace velmo

#endif
