#include "RadioTag.h"

#include "velmo/kvo/log/AndroidLog.h"

#include <cstdio>
#include <cstring>

namespace velmo {
namespace kvo {
namespace log {

namespace {

bool isRadioTag(const char* tag)
{
    static const char* const prefixes[] = {"RIL", "IMS"};
    static const char* const names[] = {"HTC_RIL", "AT", "GSM", "STK", "CDMA", "PHONE", "SMS"};
    for (const char* prefix : prefixes) {
        if (std::strncmp(tag, prefix, std::strlen(prefix)) == 0) {
            return true;
        }
    }
    for (const char* name : names) {
        if (std::strcmp(tag, name) == 0) {
            return true;
        }
    }
    return false;
}

} // namespace

int routeRadioTag(int logId, const char*& tag, char (&buffer)[radioTagSize])
{
    if (!isRadioTag(tag)) {
        return logId;
    }
    std::snprintf(buffer, sizeof(buffer), "use-Rlog/RLOG-%s", tag);
    tag = buffer;
    return AKVO_LOG_ID_RADIO;
}

} // namespace log
} // namespace kvo
} // namespace velmo
