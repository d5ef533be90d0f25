// Repeating, timing and memory accounting of a benchmark's work. Times are milliseconds of the steady clock.
#pragma once
#include <cstddef>
#include <functional>
#include <vector>

namespace mkvx {

double nowMs();
double median(std::vector<double> values);  // 0 for none

struct Repeats {
    bool ok = false;
    double firstMs = 0;  // the first pass, which warms up and is not among the others
    std::vector<double> timesMs;
};

struct RepeatLimits {
    bool once = false;      // the first pass is the only one
    double enoughMs = 120;  // no further pass once the passes took this long together
    size_t most = 7;
};

// `pass` does the work once and returns its milliseconds, or a negative number when it failed, which ends the
// repeating. Under callgrind only the first pass is collected. A first pass of more than four seconds stands
// alone.
Repeats repeat(const RepeatLimits& limits, const std::function<double()>& pass);

// This process's memory in KiB, from /proc; 0 where that is not to be had.
long peakMemoryKb();
// Resets the peak to what is resident now, and returns that.
long restartMemoryPeak();

}  // namespace mkvx
