#include "bench/Timer.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <string>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_TOGGLE_COLLECT
#endif

namespace mkvx {
namespace {

constexpr double kLongPassMs = 4000;

long statusKb(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.compare(0, name.size() + 1, name + ":") == 0)
            return std::atol(line.c_str() + name.size() + 1);
    return 0;
}

}  // namespace

double nowMs() {
    using namespace std::chrono;
    return duration<double, std::milli>(steady_clock::now().time_since_epoch()).count();
}

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    const auto middle = values.begin() + long(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

Repeats repeat(const RepeatLimits& limits, const std::function<double()>& pass) {
    Repeats result;
    CALLGRIND_TOGGLE_COLLECT;
    result.firstMs = pass();
    CALLGRIND_TOGGLE_COLLECT;
    if (result.firstMs < 0) return result;
    if (limits.once || result.firstMs > kLongPassMs) {
        result.timesMs.push_back(result.firstMs);
        result.ok = true;
        return result;
    }
    double sum = 0;
    do {
        const double ms = pass();
        if (ms < 0) return result;
        result.timesMs.push_back(ms);
        sum += ms;
    } while (sum < limits.enoughMs && result.timesMs.size() < limits.most);
    result.ok = true;
    return result;
}

long peakMemoryKb() {
    return statusKb("VmHWM");
}

long restartMemoryPeak() {
    std::ofstream("/proc/self/clear_refs") << "5" << std::flush;
    return statusKb("VmRSS");
}

}  // namespace mkvx
