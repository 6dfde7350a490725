#include "velmo/utilities/xmlserializer/NestingBound.h"

#include <cstring>

namespace velmo {
namespace utilities {
namespace xmlserializer {

bool holdsTooManyOpeningBrackets(const std::string& xml)
{
    const char* at = xml.data();
    const char* const end = at + xml.size();
    std::size_t count = 0;
    while ((at = static_cast<const char*>(std::memchr(at, '<', static_cast<std::size_t>(end - at)))) !=
           nullptr) {
        if (++count > mostOpeningBrackets) {
            return true;
        }
        ++at;
    }
    return false;
}

} // namespace xmlserializer
} // namespace utilities
} // namespace velmo
