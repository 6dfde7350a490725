#ifndef VELMO_KVO_SIM_LOG_H
#define VELMO_KVO_SIM_LOG_H

#include <string>

namespace velmo {
namespace kvo {
namespace sim {

extern const char* const programName;

// Lines on standard error, each prefixed with the program's name.
class Log
{
public:
    explicit Log(bool verbose) : _verbose(verbose) {}
    // Printed only with --verbose: the traffic, one line per event.
    void verbose(const std::string& line) const;
    // Always printed: trouble the user should hear about.
    void error(const std::string& line) const;

private:
    bool _verbose;
};

} // namespace sim
} // namespace kvo
} // namespace velmo

#endif
