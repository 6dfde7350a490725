#include "FaultPlan.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace velmo {
namespace kvo {
namespace sim {

namespace {

std::string trimmed(const std::string& line)
{
    const char* blanks = " \t\r";
    std::size_t first = line.find_first_not_of(blanks);
    if (first == std::string::npos) {
        return std::string();
    }
    return line.substr(first, line.find_last_not_of(blanks) - first + 1);
}

} // namespace

bool FaultPlan::add(const std::string& rule, std::string& error)
{
    std::uint64_t which = 0;
    Fault fault;
    if (!parseFault(rule, which, fault, error)) {
        return false;
    }
    auto inserted = _faults.emplace(which, fault);
    if (!inserted.second) {
        error = "bad fault '" + rule + "': request " + (which == everyRequest ? "*" : std::to_string(which)) +
                " already has the fault '" + inserted.first->second.rule + "'";
        return false;
    }
    return true;
}

bool FaultPlan::addFile(const std::string& path, std::string& error)
{
    std::ifstream file(path);
    if (!file) {
        error = "cannot read fault file " + path + ": " + std::strerror(errno);
        return false;
    }
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        std::string rule = trimmed(line);
        if (rule.empty() || rule[0] == '#') {
            continue;
        }
        if (!add(rule, error)) {
            error = path + ":" + std::to_string(number) + ": " + error;
            return false;
        }
    }
    return true;
}

const Fault* FaultPlan::find(std::uint64_t requestNumber) const
{
    auto found = _faults.find(requestNumber);
    if (found == _faults.end()) {
        found = _faults.find(everyRequest);
    }
    return found == _faults.end() ? nullptr : &found->second;
}

} // namespace sim
} // namespace kvo
} // namespace velmo
