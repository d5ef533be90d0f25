// mkvx seek FILE: where each seek lands.
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "device/Session.h"
#include "seek/Landing.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::optional<TrackChoice> track;
    std::vector<std::string> targets;
    Format format = Format::kTable;
};

struct Target {
    int64_t timeUs = 0;
    Landing landing;
};

std::vector<int64_t> parseTargets(const std::vector<std::string>& texts) {
    std::vector<int64_t> times;
    for (const std::string& text : texts) {
        const auto time = parseTime(text);
        if (!time) throw UsageFailure(fmt::format("--to: {} is neither microseconds nor HH:MM:SS.mmm", text));
        times.push_back(*time);
    }
    return times;
}

// All targets in their order on one source, as a player's user jumps about.
std::vector<Target> seekAll(const Session& session, const TrackInfo& track,
                            const std::vector<int64_t>& times) {
    LandingProbe probe(session, track);
    std::vector<Target> targets;
    for (const int64_t time : times) {
        android::MediaSource::ReadOptions to;
        to.setSeekTo(time);
        const Landing landing = probe.read(&to);
        if (wasInterrupted()) break;
        targets.push_back({time, landing});
    }
    return targets;
}

std::string offsetText(const Target& target) {
    if (!target.landing.unit) return "";
    const auto away = uint64_t(target.landing.unit->timeUs) - uint64_t(target.timeUs);  // extremes wrap
    return fmt::format("{:+}", int64_t(away) / 1000);
}

class Printer {
  public:
    explicit Printer(Format format)
        : mFormat(format),
          mTable(landingColumns({{"INDEX", TextTable::Align::kRight},
                                 {"TARGET", TextTable::Align::kRight},
                                 {"AWAY (ms)", TextTable::Align::kRight}})) {}

    void add(const TrackInfo& track, const std::vector<Target>& targets) {
        for (const Target& target : targets) {
            ++mAdded;
            if (mFormat == Format::kTable)
                addLandingRow(mTable,
                              {std::to_string(track.index), clockTime(target.timeUs), offsetText(target)},
                              target.landing);
            if (mFormat == Format::kJson) mSeeks.push_back(jsonOf(track, target, {}));
            if (mFormat == Format::kJsonLines) fmt::print("{}\n", dump(jsonOf(track, target, newResult())));
        }
    }
    void finish(const std::string& file) {
        if (mFormat == Format::kTable) fmt::print("{}", mTable.str());
        if (mFormat != Format::kJson) return;
        Json result = newResult();
        result["file"] = file;
        result["seeks"] = std::move(mSeeks);
        fmt::print("{}\n", dump(result));
    }
    uint64_t added() const { return mAdded; }

  private:
    static Json jsonOf(const TrackInfo& track, const Target& target, Json object) {
        object["track"] = track.index;
        object["target_us"] = target.timeUs;
        addLanding(object, target.landing);
        return object;
    }

    Format mFormat;
    Json mSeeks = Json::array();
    TextTable mTable;
    uint64_t mAdded = 0;
};

void seekTracks(const Session& session, const Options& options, const std::vector<int64_t>& times,
                Printer& printer) {
    const TrackInfo* only = chosenTrack(session.info(), options.track);
    for (const TrackInfo& track : session.info().tracks) {
        const bool isSubtitle = track.kind == TrackKind::kSubtitle;
        if (only != nullptr ? only != &track : isSubtitle) continue;
        if (isSubtitle)
            fmt::print(stderr, "mkvx: {}: index {}: subtitles follow the seeks of the master track\n",
                       options.file, track.index);
        printer.add(track, seekAll(session, track, times));
        if (wasInterrupted()) return;
    }
}

int run(const Globals& globals, const Options& options) {
    const std::vector<int64_t> times = parseTargets(options.targets);
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    (void)chosenTrack(session.info(), options.track);  // before there is a result to print
    Printer printer(options.format);
    untilInterrupted([&] { seekTracks(session, options, times, printer); });
    printer.finish(options.file);
    throwIfInterrupted(options.file, counted(printer.added(), "seek"));
    return kExitDone;
}

}  // namespace

void addSeekCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("seek", "Where each seek lands: the first unit after it");
    command.value("FILE", options->file, "The file to read").required();
    addTrackOption(command, options->track, "Only this track, not every video and audio track");
    command
        .value("--to", options->targets,
               "Where to seek: microseconds or HH:MM:SS.mmm; repeat it for more seeks on one source")
        .required()
        .repeatable();
    addFormatOption(command, options->format,
                    {{"table", Format::kTable}, {"json", Format::kJson}, {"jsonl", Format::kJsonLines}});
    command.footer("Example: mkvx seek --to 00:01:30.000 --to 5000000 film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
