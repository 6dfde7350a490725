#include "FrameBuffer.h"

namespace velmo {
namespace kvo {
namespace sim {

const std::string endMessageMarker = "\n\n";

std::string framed(const std::string& message)
{
    return message + endMessageMarker;
}

void FrameBuffer::append(const char* data, std::size_t size)
{
    _data.append(data, size);
}

bool FrameBuffer::next(std::string& message)
{
    std::size_t end = _data.find(endMessageMarker, _searchFrom);
    if (end == std::string::npos) {
        // The last byte may be the first half of a marker.
        _searchFrom = _data.empty() ? 0 : _data.size() - 1;
        return false;
    }
    message.assign(_data, 0, end);
    _data.erase(0, end + endMessageMarker.size());
    _searchFrom = 0;
    return true;
}

} // namespace sim
} // namespace kvo
} // namespace velmo
