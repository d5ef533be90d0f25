// Vorbis in Ogg (RFC 3533; granule positions as the Vorbis I specification's appendix A has them).
#include <ogg/ogg.h>
#include <vorbis/codec.h>
#include <algorithm>
#include <optional>

#include "extract/Facts.h"
#include "extract/Writer.h"

namespace mkvx {
namespace {

// Identification, comment and setup header as one decoder sees them, for the length of each packet.
class VorbisStream {
  public:
    VorbisStream() {
        vorbis_info_init(&mInfo);
        vorbis_comment_init(&mComment);
    }
    ~VorbisStream() {
        vorbis_comment_clear(&mComment);
        vorbis_info_clear(&mInfo);
    }
    VorbisStream(const VorbisStream&) = delete;
    VorbisStream& operator=(const VorbisStream&) = delete;

    bool takeHeader(ogg_packet& packet) { return vorbis_synthesis_headerin(&mInfo, &mComment, &packet) == 0; }
    // 0 for what is no audio packet.
    long blockSize(ogg_packet& packet) { return std::max(0L, vorbis_packet_blocksize(&mInfo, &packet)); }
    long rate() const { return mInfo.rate; }

  private:
    vorbis_info mInfo;
    vorbis_comment mComment;
};

// A comment header without comments: the file's was not handed on.
Bytes emptyComment() {
    static const char kVendor[] = "mkvx";
    Bytes header = {3};
    appendText(header, "vorbis");
    appendLittle(header, sizeof kVendor - 1, 4);
    appendText(header, kVendor);
    appendLittle(header, 0, 4);
    header.push_back(1);  // framing bit
    return header;
}

class OggVorbisWriter : public ExtractWriter {
  public:
    OggVorbisWriter(const ExtractTrack& track, ExtractFile& out) : ExtractWriter(out) {
        mHeaders = {configOf(track.info, "vinf"), emptyComment(), configOf(track.info, "vboo")};
        for (size_t i = 0; i < mHeaders.size(); ++i) {
            ogg_packet packet = packetOf(mHeaders[i].data(), mHeaders[i].size());
            packet.b_o_s = i == 0;
            if (!mVorbis.takeHeader(packet)) throw ExtractRefusal("its Vorbis headers cannot be decoded");
        }
        ogg_stream_init(&mStream, 1);
    }
    ~OggVorbisWriter() override { ogg_stream_clear(&mStream); }

    std::string form() const override { return "Vorbis in Ogg"; }

    void begin() override {
        for (size_t i = 0; i < mHeaders.size(); ++i) {
            ogg_packet packet = packetOf(mHeaders[i].data(), mHeaders[i].size());
            packet.b_o_s = i == 0;
            ogg_stream_packetin(&mStream, &packet);
            // The first header has a page to itself, and audio begins on a new page.
            if (i != 1) writePages(ogg_stream_flush);
        }
    }

    void write(const ExtractUnit& unit) override {
        putHeldBack(false);
        if (!mStarted) mGranule = std::max<int64_t>(0, unit.timeUs) * mVorbis.rate() / 1000000;
        mStarted = true;
        mHeldBack = Bytes(unit.data, unit.data + unit.size);
    }

    void finish() override {
        putHeldBack(true);
        writePages(ogg_stream_flush);
    }

  private:
    static ogg_packet packetOf(const uint8_t* data, size_t size) {
        ogg_packet packet{};
        packet.packet = const_cast<uint8_t*>(data);  // the library only reads it
        packet.bytes = long(size);
        return packet;
    }

    void writePages(int (*take)(ogg_stream_state*, ogg_page*)) {
        ogg_page page;
        while (take(&mStream, &page) != 0) {
            mOut.write(page.header, size_t(page.header_len));
            mOut.write(page.body, size_t(page.body_len));
        }
    }

    // One packet waits, since the last one has to say that it is.
    void putHeldBack(bool isLast) {
        if (!mHeldBack) return;
        ogg_packet packet = packetOf(mHeldBack->data(), mHeldBack->size());
        const long blockSize = mVorbis.blockSize(packet);
        // Neighbouring windows overlap: a packet completes a quarter of each. The first completes nothing.
        if (mLastBlockSize > 0) mGranule += (mLastBlockSize + blockSize) / 4;
        if (blockSize > 0) mLastBlockSize = blockSize;
        packet.granulepos = mGranule;
        packet.e_o_s = isLast;
        ogg_stream_packetin(&mStream, &packet);
        writePages(ogg_stream_pageout);
        mHeldBack.reset();
    }

    VorbisStream mVorbis;
    ogg_stream_state mStream{};
    std::vector<Bytes> mHeaders;
    std::optional<Bytes> mHeldBack;
    bool mStarted = false;
    int64_t mGranule = 0;  // samples complete so far
    long mLastBlockSize = 0;
};

}  // namespace

ExtractWriterPtr makeOggVorbisWriter(const ExtractTrack& track, ExtractFile& out) {
    return std::make_unique<OggVorbisWriter>(track, out);
}

}  // namespace mkvx
