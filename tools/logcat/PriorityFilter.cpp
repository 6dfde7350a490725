#include "PriorityFilter.h"

#include <cstring>

namespace velmo {
namespace kvo {
namespace logcat {

namespace {

constexpr int infoPriority = 4;

// The least priority byte a letter lets through, -1 for no letter. V lets
// through every record, including those whose byte is no known level; S,
// above every byte, lets none.
int leastPriority(char letter)
{
    static const char letters[] = "VDIWEF";
    if (letter == 'S') {
        return 256;
    }
    const char* found = letter == '\0' ? nullptr : std::strchr(letters, letter);
    if (found == nullptr) {
        return -1;
    }
    return found == letters ? 0 : static_cast<int>(found - letters) + 2;
}

} // namespace

bool PriorityFilter::add(const std::string& spec, std::string& error)
{
    const size_t colon = spec.rfind(':');
    const std::string tag = spec.substr(0, colon);
    const std::string letter = colon == std::string::npos ? "V" : spec.substr(colon + 1);
    const int least = letter.size() == 1 ? leastPriority(letter[0]) : -1;
    if (tag.empty() || least < 0) {
        error = "filter spec \"" + spec + "\" is not TAG:P with P one of V D I W E F S";
        return false;
    }
    if (tag == "*") {
        _leastOtherwise = least;
    } else {
        _leastByTag[tag] = least;
    }
    return true;
}

bool PriorityFilter::shows(const LogRecord& record) const
{
    const bool isText = record.kind == RecordKind::Text;
    const auto named = _leastByTag.find(isText ? record.tag : std::to_string(record.eventTag));
    const int least = named == _leastByTag.end() ? _leastOtherwise : named->second;
    return (isText ? record.priority : infoPriority) >= least;
}

} // namespace logcat
} // namespace kvo
} // namespace velmo
