#include "velmo/utilities/result/Result.h"

#include <cstring>

namespace velmo {
namespace utilities {
namespace result {

const char* ErrnoTrait::toString(ResultCode code)
{
    if (code == successCode) {
        return "Success";
    }
    return std::strerror(code);
}

} // namespace result
} // namespace utilities
} // namespace velmo
