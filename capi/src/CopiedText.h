#ifndef VELMO_KVO_LIPSYNCAPI_COPIEDTEXT_H
#define VELMO_KVO_LIPSYNCAPI_COPIEDTEXT_H

#include <cstddef>
#include <string>

namespace velmo {
namespace kvo {
namespace lipsyncapi {

// Copies `text` into `buffer` as snprintf does: cut to `size` - 1 bytes and
// always terminated when `size` is not 0. Returns the text's whole length.
inline std::size_t copyText(const std::string& text, char* buffer, std::size_t size)
{
    if (buffer != nullptr && size != 0) {
        buffer[text.copy(buffer, size - 1)] = '\0';
    }
    return text.size();
}

} // namespace lipsyncapi
} // namespace kvo
} // namespace velmo

#endif
