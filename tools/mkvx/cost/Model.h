// What it costs a player to open a file and to seek in it: a ledger for each way of reading the file, and
// what they were made for. Filled by measureCost(). Sizes are bytes. Plain values.
#pragma once
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "base/Progress.h"
#include "cost/Ledger.h"

namespace mkvx {

struct CostOptions {
    double latencyMs = 50;           // what every request takes, beside its bytes
    double megabytesPerSecond = 10;  // of 1,000,000 bytes
    size_t seeks = 10;               // spread over the duration, the same in every run
    bool demux = false;
    ProgressStyle progress = ProgressStyle::kLine;
    size_t blockSize = 64 * 1024;
    uint64_t cacheSize = 8 << 20;
};

struct CostLedgerResult {
    bool isCached = false;  // a caching network stream, which gets no index; else every read is a request
    StageCosts stages;
};

struct CostReport {
    std::string path;
    std::optional<uint64_t> size;
    std::optional<size_t> seekTrack;  // which track was sought; none without video and audio
    CostOptions options;
    std::vector<CostLedgerResult> ledgers;
};

double milliseconds(const StageCost& cost, const CostOptions& options);
StageCost totalOf(const StageCosts& stages);

void printText(const CostReport& report, std::FILE* out);
void printJson(const CostReport& report, std::FILE* out);

}  // namespace mkvx
