#include "cost/Model.h"

#include <fmt/format.h>

#include "base/Json.h"

namespace mkvx {
namespace {

Json costJson(const StageCost& cost, const CostOptions& options) {
    return {{"reads", cost.reads},
            {"bytes", cost.bytes},
            {"distinct_bytes", cost.distinct},
            {"reread_bytes", cost.again()},
            {"smallest", cost.smallest},
            {"largest", cost.largest},
            {"backwards", cost.backwards},
            {"requests", cost.requests},
            {"requested_bytes", cost.requested},
            {"ms", milliseconds(cost, options)}};
}

Json ledgerJson(const CostLedgerResult& ledger, const CostOptions& options) {
    Json json;
    json["source"] = ledger.isCached ? "caching" : "uncached";
    json["stages"] = Json::array();
    for (size_t i = 0; i < kCostStages; ++i) {
        Json stage{{"stage", toString(CostStage(i))}};
        stage.update(costJson(ledger.stages[i], options));
        json["stages"].push_back(std::move(stage));
    }
    json["total"] = costJson(totalOf(ledger.stages), options);
    return json;
}

}  // namespace

void printJson(const CostReport& report, std::FILE* out) {
    Json json = newResult();
    json["file"] = report.path;
    if (report.size) json["size"] = *report.size;
    json["latency_ms"] = report.options.latencyMs;
    json["megabytes_per_second"] = report.options.megabytesPerSecond;
    json["block_bytes"] = report.options.blockSize;
    json["cache_bytes"] = report.options.cacheSize;
    json["seeks"] = report.seekTrack ? report.options.seeks : 0;
    if (report.seekTrack) json["seek_track"] = *report.seekTrack;
    json["ledgers"] = Json::array();
    for (const auto& ledger : report.ledgers) json["ledgers"].push_back(ledgerJson(ledger, report.options));
    fmt::print(out, "{}", dump(json));
}

}  // namespace mkvx
