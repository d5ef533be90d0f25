#include "FuzzTarget.h"

#include <android/log.h>

#include <cstdio>
#include <cstdlib>

namespace fuzz {

const Target kTargets[5] = {
    {"plugin", RunPlugin},
    {"node", RunNode},
    {"lacing", RunLacing},
    {"encodings", RunEncodings},
    {"codecprivate", RunCodecPrivate},
};

void Prepare() {
    __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
}

void Require(bool holds, const std::string& promise) {
    if (holds) return;
    std::fprintf(stderr, "BROKEN PROMISE: %s\n", promise.c_str());
    std::abort();
}

void RequireEqual(const std::string& expected, const std::string& actual, const std::string& what) {
    if (expected == actual) return;
    size_t at = 0;
    while (at < expected.size() && at < actual.size() && expected[at] == actual[at]) ++at;
    const size_t from = at < 60 ? 0 : at - 60;
    Require(false, what + "\n  expected ..." + expected.substr(from, 160) + "\n  actual   ..." +
                       actual.substr(from, 160));
}

}  // namespace fuzz
