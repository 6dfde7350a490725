#ifndef VELMO_KVO_SIM_FRAMEBUFFER_H
#define VELMO_KVO_SIM_FRAMEBUFFER_H

#include <cstddef>
#include <string>

namespace velmo {
namespace kvo {
namespace sim {

// Every message on the wire ends with two line feeds.
extern const std::string endMessageMarker;

std::string framed(const std::string& message);

// Bytes received from one client, cut into messages at the end marker.
class FrameBuffer
{
public:
    void append(const char* data, std::size_t size);
    // Takes the next whole message out of the buffer, if one has arrived.
    bool next(std::string& message);
    std::size_t size() const { return _data.size(); }

private:
    std::string _data;
    // Where the next marker search starts: bytes before it hold no marker, so
    // a long message arriving in small pieces is not rescanned from its start.
    std::size_t _searchFrom = 0;
};

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
