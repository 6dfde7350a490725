#ifndef AKVO_BENCH_STDERRTODEVNULL_H
#define AKVO_BENCH_STDERRTODEVNULL_H

namespace akvo {
namespace bench {

// Sends the process's standard error to /dev/null while it lives, so that
// the library's standard-error log line is written for real (the full cost
// of the formatted write) without flooding the terminal.
class StdErrToDevNull
{
public:
    StdErrToDevNull();
    ~StdErrToDevNull();

    StdErrToDevNull(const StdErrToDevNull&) = delete;
    StdErrToDevNull& operator=(const StdErrToDevNull&) = delete;

private:
    int _savedStdErr;
};

} // namespace bench
} // namespace akvo

#endif
