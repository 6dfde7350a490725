#ifndef VELMO_KVO_LOGCAT_PRIORITYFILTER_H
#define VELMO_KVO_LOGCAT_PRIORITYFILTER_H

#include "LogRecord.h"

#include <map>
#include <string>

namespace velmo {
namespace kvo {
namespace logcat {

// The filter specs of Android's logcat: "TAG:P" shows the records of TAG at
// priority P and above, "*:P" does so for every tag not named, and P is one
// of V D I W E F, or S for none. "TAG" alone stands for "TAG:V". Without a
// "*" spec every record shows. Events count as priority I under their tag
// number.
class PriorityFilter
{
public:
    // Returns false with a one-line reason in `error` for a spec of another form.
    bool add(const std::string& spec, std::string& error);

    bool shows(const LogRecord& record) const;

private:
    std::map<std::string, int> _leastByTag;
    int _leastOtherwise = 0;
};

} // namespace logcat
} // namespace kvo
} // namespace velmo

#endif
