#ifndef VELMO_UTILITIES_SERIALIZER_NAMEDTEXTTRAIT_H
#define VELMO_UTILITIES_SERIALIZER_NAMEDTEXTTRAIT_H

namespace velmo {
namespace utilities {
namespace serializer {

// A value held as the text of an element named `tagVariable`. With
// `allowMissingText` an element without text reads as an empty value.
template <class T, const char* tagVariable, bool allowMissingText, class Conv>
struct NamedTextTrait
{
    using ValueType = T;
    static constexpr const char* tag = tagVariable;
};

} // namespace serializer
} // namespace utilities
} // namespace velmo

#endif
