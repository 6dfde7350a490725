#include "velmo/kvo/log/AndroidLog.h"

#include "LittleEndian.h"
#include "RecordWriter.h"

#include <cstring>

namespace velmo {
namespace kvo {
namespace logwriter {

namespace {

// The type byte of a string event, as the events log defines it.
constexpr uint8_t stringEventType = 2;

int writeEvent(uint8_t* eventHeader, size_t headerLength, const void* bytes, size_t length)
{
    iovec payload[] = {{eventHeader, headerLength}, {const_cast<void*>(bytes), length}};
    return writeRecord(AKVO_LOG_ID_EVENTS, payload);
}

} // namespace

} // namespace logwriter
} // namespace kvo
} // namespace velmo

using velmo::kvo::logwriter::storeLittleEndian32;

extern "C" {

int __android_log_bwrite(int32_t tag, const void* payload, size_t len)
{
    uint8_t header[4];
    storeLittleEndian32(header, static_cast<uint32_t>(tag));
    return velmo::kvo::logwriter::writeEvent(header, sizeof(header), payload, len);
}

int __android_log_btwrite(int32_t tag, char type, const void* payload, size_t len)
{
    uint8_t header[5];
    storeLittleEndian32(header, static_cast<uint32_t>(tag));
    header[4] = static_cast<uint8_t>(type);
    return velmo::kvo::logwriter::writeEvent(header, sizeof(header), payload, len);
}

int __android_log_bswrite(int32_t tag, const char* payload)
{
    const size_t length = std::strlen(payload);
    uint8_t header[9];
    storeLittleEndian32(header, static_cast<uint32_t>(tag));
    header[4] = velmo::kvo::logwriter::stringEventType;
    storeLittleEndian32(header + 5, static_cast<uint32_t>(length));
    return velmo::kvo::logwriter::writeEvent(header, sizeof(header), payload, length);
}

} // extern "C"
