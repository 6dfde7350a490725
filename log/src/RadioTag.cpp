#include "RadioTag.h"

#include "velmo/kvo/log/AndroidLog.h"

#include <cstdio>
#include <cstring>

namespace velmo {
namespace kvo {
namespace logwriter {

namespace {

bool startsWith(const char* tag, const char (&prefix)[4])
{
    return std::strncmp(tag, prefix, 3) == 0;
}

// Every record asks, so the first character picks the one or two names it
// can be before any comparison.
bool isRadioTag(const char* tag)
{
    switch (tag[0]) {
    case 'R':
        return startsWith(tag, "RIL");
    case 'I':
        return startsWith(tag, "IMS");
    case 'H':
        return std::strcmp(tag, "HTC_RIL") == 0;
    case 'A':
        return std::strcmp(tag, "AT") == 0;
    case 'G':
        return std::strcmp(tag, "GSM") == 0;
    case 'S':
        return std::strcmp(tag, "STK") == 0 || std::strcmp(tag, "SMS") == 0;
    case 'C':
        return std::strcmp(tag, "CDMA") == 0;
    case 'P':
        return std::strcmp(tag, "PHONE") == 0;
    default:
        return false;
    }
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

} // namespace logwriter
} // namespace kvo
} // namespace velmo
