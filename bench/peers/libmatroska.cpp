// libebml and libmatroska: a tree of objects for each Cluster, out of which each frame is copied, since the
// tree takes its buffers along. They offer no seeking and do not undo content encodings.
#include <ebml/EbmlHead.h>
#include <ebml/EbmlStream.h>
#include <matroska/KaxBlock.h>
#include <matroska/KaxBlockData.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxClusterData.h>
#include <matroska/KaxCues.h>
#include <matroska/KaxInfo.h>
#include <matroska/KaxInfoData.h>
#include <matroska/KaxSeekHead.h>
#include <matroska/KaxSegment.h>
#include <matroska/KaxTrackEntryData.h>
#include <matroska/KaxTracks.h>

#include <cstdlib>
#include <cstring>
#include <map>

#include "Peer.h"

namespace bench {
namespace {

using namespace libebml;
using namespace libmatroska;

class SourceIo : public IOCallback {
  public:
    explicit SourceIo(const Source& source) : mSource(source) { mSource->getSize(&mSize); }

    uint32 read(void* out, size_t size) override {
        const ssize_t got = mSource->readAt(mPosition, out, size);
        if (got <= 0) return 0;
        mPosition += got;
        return static_cast<uint32>(got);
    }
    void setFilePointer(int64 offset, seek_mode mode = seek_beginning) override {
        mPosition = offset + (mode == seek_current ? mPosition : mode == seek_end ? mSize : 0);
    }
    uint64 getFilePointer() override { return static_cast<uint64>(mPosition); }
    size_t write(const void*, size_t) override { return 0; }
    void close() override {}

  private:
    Source mSource;
    off64_t mSize = 0, mPosition = 0;
};

template <typename T>
T* as(EbmlElement* element) {
    return EbmlId(*element) == EBML_ID(T) ? static_cast<T*>(element) : nullptr;
}

class Libmatroska : public Peer {
  public:
    explicit Libmatroska(const Source& source) : mIo(source), mStream(mIo) {}

    bool open(bool forSeeking) override {
        std::unique_ptr<EbmlElement> header(mStream.FindNextID(EBML_INFO(EbmlHead), UINT64_MAX));
        if (header == nullptr) return false;
        header->SkipData(mStream, EBML_CONTEXT(header.get()));
        mSegment.reset(mStream.FindNextID(EBML_INFO(KaxSegment), UINT64_MAX));
        if (mSegment == nullptr) return false;
        uint64_t cues = 0;
        for (mElement = nextElement(); mElement != nullptr && as<KaxCluster>(mElement.get()) == nullptr;
             mElement = behind(*mElement)) {
            takeHead(mElement.get(), &cues);
        }
        if (forSeeking && cues != 0) {
            mIo.setFilePointer(static_cast<int64>(cues));
            const std::unique_ptr<EbmlElement> element = nextElement();
            if (element != nullptr && as<KaxCues>(element.get()) != nullptr) readWhole(element.get());
        }
        return !mTrackOfNumber.empty();
    }

    bool readAll(Sink& sink) override {
        for (; mElement != nullptr; mElement = behind(*mElement)) {
            if (auto* cluster = as<KaxCluster>(mElement.get())) readCluster(cluster, sink);
        }
        return true;
    }

  private:
    std::unique_ptr<EbmlElement> nextElement() {
        int levels = 0;
        return std::unique_ptr<EbmlElement>(
            mStream.FindNextElement(EBML_CONTEXT(mSegment.get()), levels, UINT64_MAX, true));
    }
    std::unique_ptr<EbmlElement> behind(EbmlElement& element) {
        element.SkipData(mStream, EBML_CONTEXT(&element));
        return nextElement();
    }
    void readWhole(EbmlElement* element) {
        EbmlElement* left = nullptr;
        int levels = 0;
        element->Read(mStream, EBML_CONTEXT(element), levels, left, true);
        delete left;
    }

    void takeHead(EbmlElement* element, uint64_t* cues) {
        if (auto* info = as<KaxInfo>(element)) {
            readWhole(info);
            mScale = static_cast<uint64_t>(GetChild<KaxTimecodeScale>(*info));
        } else if (auto* tracks = as<KaxTracks>(element)) {
            readWhole(tracks);
            for (EbmlElement* child : *tracks) {
                auto* entry = as<KaxTrackEntry>(child);
                if (entry == nullptr) continue;
                const auto number = static_cast<uint64_t>(GetChild<KaxTrackNumber>(*entry));
                if (number >= mTrackOfNumber.size()) mTrackOfNumber.resize(number + 1);
                mTrackOfNumber[number] = mTracks++;
            }
        } else if (auto* list = as<KaxSeekHead>(element)) {
            readWhole(list);
            if (const KaxSeek* entry = list->FindFirstOf(EBML_INFO(KaxCues)))
                *cues = static_cast<KaxSegment&>(*mSegment).GetGlobalPosition(entry->Location());
        }
    }

    void readCluster(KaxCluster* cluster, Sink& sink) {
        readWhole(cluster);
        uint64_t time = 0;
        for (EbmlElement* child : *cluster) {
            if (auto* timecode = as<KaxClusterTimecode>(child)) {
                time = static_cast<uint64_t>(*timecode);
            } else if (auto* simple = as<KaxSimpleBlock>(child)) {
                deliver(*simple, time, simple->IsKeyframe(), sink);
            } else if (auto* group = as<KaxBlockGroup>(child)) {
                auto* block = static_cast<KaxBlock*>(group->FindElt(EBML_INFO(KaxBlock)));
                const bool isKey = group->FindElt(EBML_INFO(KaxReferenceBlock)) == nullptr;
                if (block != nullptr) deliver(*block, time, isKey, sink);
            }
        }
    }

    void deliver(KaxInternalBlock& block, uint64_t clusterTime, bool isKey, Sink& sink) {
        const uint64_t ticks = clusterTime + static_cast<uint64_t>(int64_t{block.GetRelativeTimestamp()});
        for (unsigned i = 0; i < block.NumberFrames(); ++i) {
            DataBuffer& frame = block.GetBuffer(i);
            const size_t size = frame.Size();
            auto* bytes = static_cast<uint8_t*>(std::malloc(size + (size == 0)));
            std::memcpy(bytes, frame.Buffer(), size);
            sink.take(mTrackOfNumber[block.TrackNum()], bytes, size,
                      static_cast<int64_t>(ticks * mScale / 1000), isKey);
            std::free(bytes);
        }
    }

    SourceIo mIo;
    EbmlStream mStream;
    std::unique_ptr<EbmlElement> mSegment, mElement;
    std::vector<size_t> mTrackOfNumber;
    size_t mTracks = 0;
    uint64_t mScale = 1000000;
};

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    return bench::peerMain(
        argc, argv, [](const bench::Source& source) { return std::make_unique<bench::Libmatroska>(source); });
}
