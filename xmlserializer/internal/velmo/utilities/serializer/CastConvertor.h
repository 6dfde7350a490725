#ifndef VELMO_UTILITIES_SERIALIZER_CASTCONVERTOR_H
#define VELMO_UTILITIES_SERIALIZER_CASTCONVERTOR_H

#include "velmo/utilities/serializer/Convertor.h"

#include <string>

namespace velmo {
namespace utilities {
namespace serializer {

// Reads a value as the type `Through` and casts it, so that an enumeration
// travels as its integer value; no range check is made on the cast.
template <class T, class Through>
struct CastConvertor
{
    static bool fromString(const std::string& text, T& value)
    {
        Through through = Through();
        if (!Convertor<Through>::fromString(text, through)) {
            return false;
        }
        value = static_cast<T>(through);
        return true;
    }
};

} // namespace serializer
} // namespace utilities
} // namespace velmo

#endif
