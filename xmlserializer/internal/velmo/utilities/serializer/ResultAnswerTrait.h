#ifndef VELMO_UTILITIES_SERIALIZER_RESULTANSWERTRAIT_H
#define VELMO_UTILITIES_SERIALIZER_RESULTANSWERTRAIT_H

namespace velmo {
namespace utilities {
namespace serializer {

// A command answer named `tagVariable` that carries nothing but the server's
// result. Its serializer belongs to the command framework, which owns the
// result element.
template <const char* tagVariable>
struct ResultAnswerTrait
{
    static constexpr const char* tag = tagVariable;
};

} // namespace serializer
} // namespace utilities
} // namespace velmo

#endif
