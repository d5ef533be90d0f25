#include "cost/Model.h"

namespace mkvx {

double milliseconds(const StageCost& cost, const CostOptions& options) {
    return double(cost.requests) * options.latencyMs +
           double(cost.requested) / (options.megabytesPerSecond * 1000.0);
}

StageCost totalOf(const StageCosts& stages) {
    StageCost total;
    for (const StageCost& stage : stages) total.add(stage);
    return total;
}

}  // namespace mkvx
