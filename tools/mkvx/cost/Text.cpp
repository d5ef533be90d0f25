#include "cost/Model.h"

#include <fmt/format.h>

#include "base/Text.h"

namespace mkvx {
namespace {

std::string numberText(uint64_t value) {
    return std::to_string(value);
}

std::string stageText(const CostReport& report, CostStage stage) {
    switch (stage) {
        case CostStage::kOther:
            return "chapters etc.";
        case CostStage::kClusters:
            return "clusters passed over";
        case CostStage::kScan:
            return "scan for an index";
        case CostStage::kFirstUnits:
            return "first unit of each track";
        case CostStage::kSeeks:
            return fmt::format("{} seeks", report.options.seeks);
        case CostStage::kDemux:
            return "every unit";
        default:
            return toString(stage);
    }
}

class LedgerTable {
  public:
    LedgerTable(const CostReport& report, bool isCached)
        : mReport(report), mIsCached(isCached), mTable(columns(isCached)) {}

    void add(const std::string& name, const StageCost& cost) {
        std::vector<std::string> row{name, numberText(cost.reads), numberText(cost.bytes)};
        if (mIsCached)
            row.insert(row.end(), {numberText(cost.requests), numberText(cost.requested)});
        else
            row.insert(row.end(),
                       {numberText(cost.distinct), numberText(cost.again()), numberText(cost.smallest),
                        numberText(cost.largest), numberText(cost.backwards)});
        row.push_back(fmt::format("{:.1f}", milliseconds(cost, mReport.options)));
        mTable.addRow(std::move(row));
    }
    std::string str() const { return mTable.str(); }

  private:
    static std::vector<TextTable::Column> columns(bool isCached) {
        constexpr auto kRight = TextTable::Align::kRight;
        if (isCached)
            return {{"STAGE"},           {"READS", kRight},    {"BYTES", kRight}, {"REQUESTS", kRight},
                    {"FETCHED", kRight}, {"TIME (ms)", kRight}};
        return {{"STAGE"},           {"READS", kRight},     {"BYTES", kRight},
                {"NEW", kRight},     {"AGAIN", kRight},     {"SMALLEST", kRight},
                {"LARGEST", kRight}, {"BACKWARDS", kRight}, {"TIME (ms)", kRight}};
    }

    const CostReport& mReport;
    const bool mIsCached;
    TextTable mTable;
};

// Why opening goes on behind the head and the Cues.
void printReasons(const StageCosts& stages, std::FILE* out) {
    constexpr uint64_t kHeader = 12;  // of the one Cluster that ends a search
    if (stages[size_t(CostStage::kClusters)].distinct > kHeader)
        fmt::print(out,
                   "Clusters are passed over because SeekHead, Info and Tracks do not all stand in front.\n");
    if (stages[size_t(CostStage::kScan)].reads > 0)
        fmt::print(out,
                   "There are no Cues that opening finds, so that each Cluster is visited for an index.\n");
}

void printLedger(const CostReport& report, const CostLedgerResult& ledger, std::FILE* out) {
    if (ledger.isCached)
        fmt::print(out,
                   "\nThrough a cache of {} KiB in blocks of {} KiB, as for a network stream, which gets no "
                   "index:\n",
                   report.options.cacheSize / 1024, report.options.blockSize / 1024);
    else
        fmt::print(out, "\nWithout a cache, where each read is a request:\n");
    LedgerTable table(report, ledger.isCached);
    for (size_t i = 0; i < kCostStages; ++i)
        if (ledger.stages[i].reads > 0) table.add(stageText(report, CostStage(i)), ledger.stages[i]);
    table.add("total", totalOf(ledger.stages));
    fmt::print(out, "{}", table.str());
    printReasons(ledger.stages, out);
}

}  // namespace

void printText(const CostReport& report, std::FILE* out) {
    fmt::print(out, "{}: {}, at {} ms a request and {} MB/s\n", printable(report.path),
               report.size ? fmt::format("{} bytes", *report.size) : "unknown size", report.options.latencyMs,
               report.options.megabytesPerSecond);
    for (const CostLedgerResult& ledger : report.ledgers) printLedger(report, ledger, out);
}

}  // namespace mkvx
