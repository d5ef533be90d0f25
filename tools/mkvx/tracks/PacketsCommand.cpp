// mkvx packets FILE: every unit that the plug-in delivers, track by track.
#include <fmt/format.h>
#include <limits>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "device/Session.h"
#include "device/TrackReader.h"
#include "device/UnitProgress.h"
#include "tracks/Render.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::optional<TrackChoice> track;
    size_t limit = std::numeric_limits<size_t>::max();  // units per track
    bool all = false;
    Format format = Format::kTable;
    ProgressStyle progress = ProgressStyle::kLine;
};

class Listing {
  public:
    Listing(const Session& session, const Options& options)
        : mSession(session),
          mOptions(options),
          mWriter(makeUnitWriter(options.format, options.file, stdout)),
          mProgress(options.file, besideListing(options.progress),
                    options.track ? 1 : session.info().tracks.size()) {}

    uint64_t listed() const { return mListed; }

    void list(const TrackInfo& track) {
        mProgress.beginPass(track.durationUs.value_or(0));
        if (track.kind == TrackKind::kSubtitle)
            listSubtitles(track);
        else
            listTrack(track);
    }
    void finish() { mWriter->finish(); }

  private:
    std::unique_ptr<TwinCursor> twin(const TrackInfo& track) const {
        return mOptions.all ? mSession.reader().cursor(track.number) : nullptr;
    }

    void note(const TrackInfo& track, const std::string& text) {
        mProgress.hide();
        fmt::print(stderr, "mkvx: {}: index {}: {}\n", mOptions.file, track.index, text);
    }

    void noteUnreadable(const TrackInfo& track, TrackReader& reader) {
        if (mOptions.all && reader.unreadable() > 0)
            note(track, fmt::format("{} units could not be read", reader.unreadable()));
        if (!mOptions.all && reader.endedEarly())
            note(track, "the listing ends at a unit that could not be read (--all goes on)");
    }

    Unit write(const TrackInfo& track, android::MediaBuffer& buffer) {
        const Unit unit = describeUnit(track, buffer, mSha1);
        mWriter->write(unit);
        ++mListed;
        return unit;
    }

    void listTrack(const TrackInfo& track) {
        TrackReader reader(mSession.newSource(track.index), twin(track));
        for (size_t listed = 0; listed < mOptions.limit; ++listed) {
            const BufferPtr buffer = reader.next();
            if (!buffer) return noteUnreadable(track, reader);
            mProgress.reach(write(track, *buffer));
        }
    }

    // Subtitles arrive only while the master track is read past them, so a track has a pass of its own:
    // whatever another subtitle track's source drops in its own pass is not missing here.
    void listSubtitles(const TrackInfo& track) {
        const TrackInfo* master = mSession.masterTrack();
        if (master == nullptr)
            return note(track,
                        fmt::format("no subtitle can arrive, since the master track (track number {}) has "
                                    "no source that reads the file",
                                    mSession.reader().head().masterTrack()));
        const android::sp<android::MediaExtractor> extractor = mSession.newExtractor();
        TrackReader driver(extractor->getTrack(master->index), twin(*master));
        TrackReader subtitles(extractor->getTrack(track.index));
        size_t left = mOptions.limit;
        bool more = true;
        while (more && left > 0) {
            const BufferPtr read = driver.next();
            more = read != nullptr;
            if (more) mProgress.reach(describeUnit(*master, *read));
            left -= drain(track, subtitles, left);
        }
    }

    // Returns how many were listed, at most `limit`.
    size_t drain(const TrackInfo& track, TrackReader& subtitles, size_t limit) {
        size_t listed = 0;
        for (; listed < limit; ++listed) {
            const BufferPtr buffer = subtitles.next();
            if (!buffer) break;
            write(track, *buffer);
        }
        return listed;
    }

    const Session& mSession;
    const Options& mOptions;
    std::unique_ptr<UnitWriter> mWriter;
    Sha1 mSha1;
    UnitProgress mProgress;
    uint64_t mListed = 0;
};

// Empty for a good value, else what is wrong with it.
std::string requirePositive(const std::string& text) {
    return text.find_first_not_of("0") == std::string::npos ? "has to be more than 0" : "";
}

int run(const Globals& globals, const Options& options) {
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    const std::vector<TrackInfo>& tracks = session.info().tracks;
    const TrackInfo* only = chosenTrack(session.info(), options.track);
    if (tracks.empty())
        fmt::print(stderr, "mkvx: {}: none of its {} tracks is offered (mkvx check says why)\n", options.file,
                   session.reader().head().trackCount());
    Listing listing(session, options);
    untilInterrupted([&] {
        for (const TrackInfo& track : tracks)
            if (!wasInterrupted() && (only == nullptr || only == &track)) listing.list(track);
    });
    listing.finish();
    throwIfInterrupted(options.file, counted(listing.listed(), "unit"));
    return kExitDone;
}

}  // namespace

void addPacketsCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("packets", "Every unit that the plug-in delivers, track by track");
    command.value("FILE", options->file, "The file to read").required();
    addTrackOption(command, options->track, "Only this track");
    command.value("--limit", options->limit, "At most this many units per track")
        .checked(requirePositive, "N > 0");
    command.flag("--all", options->all, "Go on past units that cannot be read; a player stops at the first");
    addProgressOption(command, options->progress);
    addFormatOption(command, options->format,
                    {{"table", Format::kTable},
                     {"json", Format::kJson},
                     {"jsonl", Format::kJsonLines},
                     {"csv", Format::kCsv}});
    command.footer("Example: mkvx packets --track 0 --limit 10 film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
