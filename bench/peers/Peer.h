// One other reader of Matroska files under the benchmark: what it is asked to do, and where its frames go.
//
// A peer reads through the same byte sources as `mkvx bench` does and is timed by the same code; its program
// takes the same arguments and prints the same JSON line.
#pragma once

#include <media/stagefright/DataSource.h>
#include <zlib.h>

#include <cstdint>
#include <functional>
#include <memory>

#include "bench/Work.h"

namespace bench {

using Source = android::sp<android::DataSource>;

// Takes note of each frame as a consumer would: its ends are looked at, its bytes belong to the peer.
class Sink {
  public:
    explicit Sink(bool withCrc) : mWithCrc(withCrc) {}

    // `track` counts the file's TrackEntries from 0.
    void take(size_t track, const uint8_t* bytes, size_t size, int64_t timeUs, bool isKey) {
        if (track >= mTallies.size()) mTallies.resize(track + 1);
        mkvx::Tally& tally = mTallies[track];
        ++tally.units;
        tally.bytes += size;
        tally.keys += isKey;
        tally.timeSumUs += static_cast<uint64_t>(timeUs);
        if (size > 0) mTouched = mTouched + bytes[0] + bytes[size - 1];
        if (mWithCrc) tally.crc = static_cast<uint32_t>(crc32_z(tally.crc, bytes, size));
    }
    const mkvx::Tallies& tallies() const { return mTallies; }

  private:
    bool mWithCrc;
    mkvx::Tallies mTallies;
    volatile unsigned mTouched = 0;  // so that no compiler leaves the look out
};

// Lives for one pass; the destructor closes. A false answer fails the measurement.
class Peer {
  public:
    virtual ~Peer() = default;
    // Head and tracks; for seeking also whatever the first seek needs.
    virtual bool open(bool forSeeking) = 0;
    // Every frame of every track to the end, each in a fresh buffer.
    virtual bool readAll(Sink& sink) = 0;
    virtual int64_t durationUs() const { return 0; }
    // To the key frame at or before `timeUs`; one frame of the first video track, or of the first track.
    virtual bool seekAndRead(int64_t, Sink&) { return false; }
};

using MakePeer = std::function<std::unique_ptr<Peer>(const Source&)>;

// The program of one peer. `prepare` runs once, before anything is measured.
int peerMain(int argc, char** argv, const MakePeer& make,
             const std::function<void(const Source&)>& prepare = {});

}  // namespace bench
