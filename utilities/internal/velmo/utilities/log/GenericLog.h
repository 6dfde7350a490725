#ifndef VELMO_UTILITIES_LOG_GENERICLOG_H
#define VELMO_UTILITIES_LOG_GENERICLOG_H

#include "velmo/kvo/log/AndroidLog.h"
#include "velmo/utilities/TypeList.h"
#include "velmo/utilities/log/StandardErrorLine.h"

#include <cstdarg>
#include <sstream>
#include <string>

namespace velmo {
namespace utilities {

// "details", not "detail": the level enumeration's name is fixed by the
// design, the one exception to the one spelling of the internal namespace.
// Other layers name it Level.
namespace details {
struct Level
{
    enum Enum
    {
        Fatal = 33,
        Info = 36
    };
};
} // namespace details

using Level = details::Level;

namespace detail {
template <Level::Enum L>
struct LevelInfo;

template <>
struct LevelInfo<Level::Fatal>
{
    static constexpr int androidPriority = AKVO_LOG_FATAL;
    static constexpr const char* letter = "F";
};

template <>
struct LevelInfo<Level::Info>
{
    static constexpr int androidPriority = AKVO_LOG_INFO;
    static constexpr const char* letter = "I";
};
} // namespace detail

// One line per message, "<letter>/<tag> <message>", written whole.
struct StdIoLogTrait
{
    template <Level::Enum L>
    static void valog(const char* tag, const char* format, va_list args)
    {
        writeStandardErrorLine(detail::LevelInfo<L>::letter, tag, format, args);
    }
};

template <bool>
struct AndroidLogTrait;

template <>
struct AndroidLogTrait<false>
{
    template <Level::Enum L>
    static void valog(const char* tag, const char* format, va_list args)
    {
        __android_log_vprint(detail::LevelInfo<L>::androidPriority, tag, format, args);
    }
};

// Delivers each message to every trait of the list, tail first, so that the
// Android record precedes the standard-error line.
template <class List>
class GenericLog;

template <>
class GenericLog<detail::TypeNull>
{
public:
    template <Level::Enum L>
    static void valog(const char*, const char*, va_list)
    {
    }
};

template <class Head, class Tail>
class GenericLog<TypeList<Head, Tail>>
{
public:
    template <Level::Enum L>
    __attribute__((format(printf, 2, 3))) static void log(const char* tag, const char* format, ...)
    {
        va_list args;
        va_start(args, format);
        valog<L>(tag, format, args);
        va_end(args);
    }

    template <Level::Enum L>
    static void valog(const char* tag, const char* format, va_list args)
    {
        va_list tailArgs;
        va_copy(tailArgs, args);
        GenericLog<Tail>::template valog<L>(tag, format, tailArgs);
        va_end(tailArgs);
        Head::template valog<L>(tag, format, args);
    }

    template <Level::Enum L>
    class Stream
    {
    public:
        explicit Stream(const char* tag) : _stream(std::ios_base::out), _tag(tag) {}

        ~Stream()
        {
            const std::string text = _stream.str();
            if (!text.empty()) {
                log("%s", text.c_str());
            }
        }

        __attribute__((format(printf, 2, 3))) void log(const char* format, ...)
        {
            va_list args;
            va_start(args, format);
            GenericLog::template valog<L>(_tag, format, args);
            va_end(args);
        }

        template <class T>
        Stream& operator<<(const T& value)
        {
            _stream << value;
            return *this;
        }

        Stream(const Stream&) = delete;
        Stream& operator=(const Stream&) = delete;

    private:
        std::ostringstream _stream;
        const char* _tag;
    };
};

using Log = GenericLog<TypeListOf<StdIoLogTrait, AndroidLogTrait<false>>>;

} // namespace utilities
} // namespace velmo

#endif
