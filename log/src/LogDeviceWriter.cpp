#include "velmo/kvo/log/AndroidLog.h"

extern "C" int __android_log_vprint(int, const char*, const char*, va_list)
{
    return -1;
}
