// mkvx bench open|demux|seek FILE: how long the reader takes, as one JSON line that a benchmark run collects.
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Json.h"
#include "bench/Timer.h"
#include "bench/Work.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "source/BenchSource.h"
#include "source/OpenSource.h"
#include "source/Spool.h"

namespace mkvx {
namespace {

constexpr size_t kSeeks = 200;

struct Options {
    std::string work, file, source = "mem";
    bool crc = false, once = false, reads = false;
    Format format = Format::kTable;
};

using Source = android::sp<android::DataSource>;

double runOnce(const Options& options, const Source& source, Tallies& tallies) {
    if (options.work == "open") return benchOpen(source);
    if (options.work == "seek") return benchSeek(source, kSeeks, {options.crc}, tallies);
    return benchDemux(source, {options.crc}, tallies);
}

RepeatLimits limitsFor(const Options& options) {
    // Opening is over so soon that seven passes would measure the clock.
    if (options.work == "open") return {options.once, 100, 500};
    return {options.once, 120, 7};
}

Tally sumOf(const Tallies& tallies) {
    Tally sum;
    for (const Tally& tally : tallies) {
        sum.units += tally.units;
        sum.bytes += tally.bytes;
        sum.keys += tally.keys;
        sum.timeSumUs += tally.timeSumUs;
    }
    return sum;
}

uint64_t operationsIn(const Options& options, const Tally& sum) {
    return options.work == "open" ? 1 : sum.units;
}

Json tracksJson(const Tallies& tallies) {
    auto tracks = Json::array();
    for (const Tally& tally : tallies)
        tracks.push_back({tally.units, tally.bytes, tally.keys, fmt::format("{:08x}", tally.crc)});
    return tracks;
}

Json resultJson(const Options& options, const Repeats& repeats, const Tallies& tallies) {
    const Tally sum = sumOf(tallies);
    Json line = newResult();
    line["op"] = options.work;
    line["file"] = options.file.substr(options.file.rfind('/') + 1);
    line["source"] = options.source;
    line["ok"] = repeats.ok;
    line["ms"] = median(repeats.timesMs);
    line["first_ms"] = repeats.firstMs;
    line["runs"] = repeats.timesMs.size();
    line["count"] = operationsIn(options, sum);
    line["bytes"] = sum.bytes;
    line["keys"] = sum.keys;
    line["pts_sum_us"] = int64_t(sum.timeSumUs);
    return line;
}

// One more pass, whose time is not taken: counting would be in it.
void addReads(Json& line, const Options& options, const Source& source) {
    const android::sp<CountingSource> counting = new CountingSource(source);
    Tallies ignored;
    runOnce(options, counting, ignored);
    line["reads"] = counting->reads();
    line["read_bytes"] = counting->bytes();
}

std::string sentence(const Options& options, const Repeats& repeats, const Tallies& tallies) {
    const Tally sum = sumOf(tallies);
    const double ms = median(repeats.timesMs);
    const auto count = double(std::max<uint64_t>(operationsIn(options, sum), 1));
    std::string text = fmt::format("{} {} ({}): {:.3f} ms", options.work, options.file, options.source, ms);
    if (options.work != "open")
        text += fmt::format(", {:.0f} units, {:.1f} ns each", count, ms * 1e6 / count);
    if (options.work == "demux")
        text += fmt::format(", {:.2f} GB/s", double(sum.bytes) / std::max(ms, 1e-6) / 1e6);
    return text;
}

Source openFor(const Options& options, const SourceOptions& how) {
    if (isUrl(options.file)) return openSource(options.file, how);
    const std::string file = isStandardInput(options.file) ? spooledInput().path() : options.file;
    return withFaults(openBenchSource(options.source, file), how.faults);
}

int run(const Globals& globals, const Options& options) {
    endWhenInterrupted();  // what is timed looks at nothing else
    const Source source = openFor(options, globals.source);
    const long residentKb = restartMemoryPeak();
    Tallies tallies;
    const Repeats repeats = repeat(limitsFor(options), [&] { return runOnce(options, source, tallies); });
    const long peakKb = peakMemoryKb();
    Json line = resultJson(options, repeats, tallies);
    line["rss_kb"] = peakKb;
    line["rss0_kb"] = residentKb;
    if (options.reads && repeats.ok) addReads(line, options, source);
    line["tracks"] = tracksJson(tallies);
    if (options.format != Format::kJson) fmt::print("{}\n", sentence(options, repeats, tallies));
    fmt::print("{}\n", dump(line));
    if (!repeats.ok)
        throw FileFailure(options.file,
                          "cannot be used for bench " + options.work + " (mkvx check says why)");
    return kExitDone;
}

}  // namespace

void addBenchCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("bench", "How long opening, reading everything, or 200 seeks take");
    command.value("WORK", options->work, "open, demux or seek").required().oneOf({"open", "demux", "seek"});
    command.value("FILE", options->file, "The file to work on").required();
    command.value("--source", options->source, "Where the bytes come from: mem, window or pread")
        .oneOf({"mem", "window", "pread"})
        .showDefault();
    command.flag("--crc", options->crc, "CRC-32 of each track's payloads");
    command.flag("--once", options->once, "A single pass");
    command.flag("--reads", options->reads, "Count the reads of the source in one more pass");
    addFormatOption(command, options->format, {{"text", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx bench demux film.mkv --source pread --format json");
    command.action([&globals, options] {
        if (isUrl(options->file)) options->source = "url";
        return run(globals, *options);
    });
}

}  // namespace mkvx
