#ifndef VELMO_KVO_LOGWRITER_LITTLEENDIAN_H
#define VELMO_KVO_LOGWRITER_LITTLEENDIAN_H

#include <cstdint>

namespace velmo {
namespace kvo {
namespace logwriter {

// The log daemon reads every multi-byte field of a record as little-endian,
// whatever the writer's byte order.
inline void storeLittleEndian16(uint8_t* out, uint16_t value)
{
    out[0] = static_cast<uint8_t>(value);
    out[1] = static_cast<uint8_t>(value >> 8);
}

inline void storeLittleEndian32(uint8_t* out, uint32_t value)
{
    storeLittleEndian16(out, static_cast<uint16_t>(value));
    storeLittleEndian16(out + 2, static_cast<uint16_t>(value >> 16));
}

} // namespace logwriter
} // namespace kvo
} // namespace velmo

#endif
