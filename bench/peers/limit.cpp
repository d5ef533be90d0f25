// The copy limit: nothing is parsed, each frame's bytes go from the source straight into a fresh buffer of
// the right size. What a demultiplexer costs beyond that is its own.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "FrameIndex.h"

namespace bench {
namespace {

std::unique_ptr<FrameIndex> gIndex;  // made before the measurement

class Buffer {
  public:
    explicit Buffer(size_t size) : mBytes(static_cast<uint8_t*>(std::malloc(size + (size == 0)))) {}
    ~Buffer() { std::free(mBytes); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    uint8_t* bytes() { return mBytes; }

  private:
    uint8_t* mBytes;
};

class Limit : public Peer {
  public:
    explicit Limit(const Source& source) : mSource(source) { inflateInit(&mStream); }
    ~Limit() override { inflateEnd(&mStream); }

    // The bytes of the head and the Cues are copied once.
    bool open(bool forSeeking) override {
        for (const auto& [offset, size] : gIndex->head()) {
            if (!forSeeking) break;
            Buffer copy(size);
            mSource->readAt(static_cast<off64_t>(offset), copy.bytes(), size);
            asm volatile("" : : "r"(copy.bytes()) : "memory");  // the copy is not left out
        }
        return true;
    }

    bool readAll(Sink& sink) override {
        for (const IndexedFrame& frame : gIndex->frames()) deliver(frame, sink);
        return true;
    }

    int64_t durationUs() const override { return gIndex->durationUs(); }

    bool seekAndRead(int64_t timeUs, Sink& sink) override {
        if (mKeys.empty()) collectKeys();
        const auto behind =
            std::upper_bound(mKeys.begin(), mKeys.end(), timeUs,
                             [](int64_t time, const IndexedFrame* frame) { return time < frame->timeUs; });
        deliver(behind == mKeys.begin() ? **behind : **(behind - 1), sink);
        return true;
    }

  private:
    void collectKeys() {
        const auto& tracks = gIndex->tracks();
        const auto video =
            std::find_if(tracks.begin(), tracks.end(), [](const IndexedTrack& t) { return t.isVideo; });
        const auto wanted = video == tracks.end() ? 0 : video - tracks.begin();
        for (const IndexedFrame& frame : gIndex->frames())
            if (frame.track == wanted && frame.isKey && frame.beginsBlock) mKeys.push_back(&frame);
    }

    void deliver(const IndexedFrame& frame, Sink& sink) {
        const IndexedTrack& track = gIndex->tracks()[frame.track];
        Buffer buffer(frame.size);
        if (track.encoding == IndexedTrack::Encoding::kZlib) {
            inflateInto(frame, buffer.bytes());
        } else {
            const size_t header = track.header.size();
            if (header > 0) std::memcpy(buffer.bytes(), track.header.data(), header);
            mSource->readAt(static_cast<off64_t>(frame.offset), buffer.bytes() + header, frame.stored);
        }
        sink.take(frame.track, buffer.bytes(), frame.size, frame.timeUs, frame.isKey);
    }

    // One stream for all frames, and the room is known.
    void inflateInto(const IndexedFrame& frame, uint8_t* out) {
        if (mStored.size() < frame.stored) mStored.resize(frame.stored);
        mSource->readAt(static_cast<off64_t>(frame.offset), mStored.data(), frame.stored);
        inflateReset(&mStream);
        mStream.next_in = mStored.data();
        mStream.avail_in = frame.stored;
        mStream.next_out = out;
        mStream.avail_out = frame.size;
        inflate(&mStream, Z_FINISH);
    }

    Source mSource;
    z_stream mStream = {};
    std::vector<uint8_t> mStored;
    std::vector<const IndexedFrame*> mKeys;
};

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    using namespace bench;
    return peerMain(
        argc, argv, [](const Source& source) { return std::make_unique<Limit>(source); },
        [](const Source& source) { gIndex = std::make_unique<FrameIndex>(source); });
}
