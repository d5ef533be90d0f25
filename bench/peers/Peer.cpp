#include "Peer.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <string>

#include "source/BenchSource.h"
#include "bench/Timer.h"
#include "base/Failure.h"
#include "seek/Targets.h"

namespace bench {
namespace {

constexpr size_t kSeeks = 200;
constexpr double kFailed = -1;

struct Options {
    std::string work, file, source = "mem";
    bool crc = false, once = false;
};

double passOf(const Options& options, const Source& source, const MakePeer& make, Sink& sink) {
    const double start = mkvx::nowMs();
    std::unique_ptr<Peer> peer = make(source);
    bool good = peer->open(options.work != "demux");
    if (options.work == "demux") good = good && peer->readAll(sink);
    if (options.work != "seek") {
        peer.reset();
        return good ? mkvx::nowMs() - start : kFailed;
    }
    if (!good) return kFailed;
    const auto targets = mkvx::seekTargets(kSeeks, peer->durationUs());
    const double opened = mkvx::nowMs();
    for (const int64_t target : targets)
        if (!peer->seekAndRead(target, sink)) return kFailed;
    return mkvx::nowMs() - opened;
}

nlohmann::ordered_json resultOf(const Options& options, const mkvx::Repeats& repeats, const Sink& sink) {
    nlohmann::ordered_json line;
    uint64_t units = 0, bytes = 0, times = 0;
    auto tracks = nlohmann::ordered_json::array();
    for (const mkvx::Tally& tally : sink.tallies()) {
        units += tally.units;
        bytes += tally.bytes;
        times += tally.timeSumUs;
        char crc[9];
        std::snprintf(crc, sizeof crc, "%08x", tally.crc);
        tracks.push_back({tally.units, tally.bytes, tally.keys, crc});
    }
    line["ok"] = repeats.ok;
    line["ms"] = mkvx::median(repeats.timesMs);
    line["first_ms"] = repeats.firstMs;
    line["count"] = options.work == "open" ? 1 : units;
    line["bytes"] = bytes;
    line["pts_sum_us"] = static_cast<int64_t>(times);
    line["tracks"] = tracks;
    return line;
}

int measure(const Options& options, const MakePeer& make, const std::function<void(const Source&)>& prepare) {
    const Source source = mkvx::openBenchSource(options.source, options.file);
    if (prepare) prepare(source);
    const long residentKb = mkvx::restartMemoryPeak();
    const mkvx::RepeatLimits limits = options.work == "open" ? mkvx::RepeatLimits{options.once, 100, 500}
                                                             : mkvx::RepeatLimits{options.once, 120, 7};
    Sink sink(options.crc);
    const mkvx::Repeats repeats = mkvx::repeat(limits, [&] {
        sink = Sink(options.crc);
        return passOf(options, source, make, sink);
    });
    nlohmann::ordered_json line = resultOf(options, repeats, sink);
    line["rss_kb"] = mkvx::peakMemoryKb();
    line["rss0_kb"] = residentKb;
    std::puts(line.dump().c_str());
    return repeats.ok ? mkvx::kExitDone : mkvx::kExitFileUnusable;
}

}  // namespace

int peerMain(int argc, char** argv, const MakePeer& make, const std::function<void(const Source&)>& prepare) {
    Options options;
    CLI::App app("Another reader under the benchmark");
    app.add_option("WORK", options.work)->required()->check(CLI::IsMember({"open", "demux", "seek"}));
    app.add_option("FILE", options.file)->required();
    app.add_option("--source", options.source)->check(CLI::IsMember({"mem", "window", "pread"}));
    app.add_flag("--crc", options.crc);
    app.add_flag("--once", options.once);
    CLI11_PARSE(app, argc, argv);
    try {
        return measure(options, make, prepare);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return mkvx::kExitFileUnusable;
    }
}

}  // namespace bench
