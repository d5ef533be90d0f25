#include "tracks/Packets.h"

#include <fmt/format.h>

#include "base/Interrupt.h"
#include "base/Terminal.h"
#include "device/TrackReader.h"
#include "device/UnitProgress.h"

namespace mkvx {
namespace {

class PacketPass {
  public:
    PacketPass(const Session& session, const PacketOptions& options, size_t passes, Listing<Unit>& out)
        : mSession(session),
          mOptions(options),
          mOut(out),
          mProgress(session.info().path, besideListing(options.progress), passes) {}

    uint64_t listed() const { return mListed; }

    void list(const TrackInfo& track) {
        mProgress.beginPass(track.durationUs.value_or(0));
        if (track.kind == TrackKind::kSubtitle)
            listSubtitles(track);
        else
            listTrack(track);
    }

  private:
    std::unique_ptr<TwinCursor> twin(const TrackInfo& track) const {
        return mOptions.all ? mSession.reader().cursor(track.number) : nullptr;
    }

    void note(const TrackInfo& track, const std::string& text) {
        mProgress.hide();
        tell(fmt::format("{}: index {}: {}", mSession.info().path, track.index, text));
    }

    void noteUnreadable(const TrackInfo& track, TrackReader& reader) {
        if (mOptions.all && reader.unreadable() > 0)
            note(track, fmt::format("{} units could not be read", reader.unreadable()));
        if (!mOptions.all && reader.endedEarly())
            note(track, "the listing ends at a unit that could not be read (--all goes on)");
    }

    void noteNoMaster(const TrackInfo& track) {
        note(track, fmt::format("no subtitle can arrive, since the master track (track number {}) has "
                                "no source that reads the file",
                                mSession.reader().head().masterTrack()));
    }

    Unit write(const TrackInfo& track, android::MediaBuffer& buffer) {
        const Unit unit = describeUnit(track, buffer, mSha1);
        mOut.write(unit);
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
        if (master == nullptr) return noteNoMaster(track);
        const android::sp<android::MediaExtractor> extractor = mSession.newExtractor();
        TrackReader driver(extractor->getTrack(master->index), twin(*master));
        TrackReader subtitles(extractor->getTrack(track.index));
        size_t left = mOptions.limit;
        for (bool more = true; more && left > 0;) {
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
    const PacketOptions& mOptions;
    Listing<Unit>& mOut;
    Sha1 mSha1;
    UnitProgress mProgress;
    uint64_t mListed = 0;
};

}  // namespace

uint64_t listPackets(const Session& session, const TrackInfo* only, const PacketOptions& options,
                     Listing<Unit>& out) {
    const std::vector<TrackInfo>& tracks = session.info().tracks;
    PacketPass pass(session, options, only != nullptr ? 1 : tracks.size(), out);
    untilInterrupted([&] {
        for (const TrackInfo& track : tracks)
            if (!wasInterrupted() && (only == nullptr || only == &track)) pass.list(track);
    });
    return pass.listed();
}

}  // namespace mkvx
