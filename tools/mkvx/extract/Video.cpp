// Video: streams of start codes, and IVF.
#include <fmt/format.h>
#include <algorithm>

#include "extract/Facts.h"
#include "extract/Writer.h"
#include "utils/MimeTypes.h"
#include "utils/NalRewrite.h"

namespace mkvx {
namespace {

class IvfWriter : public ExtractWriter {
  public:
    IvfWriter(const ExtractTrack& track, ExtractFile& out) : ExtractWriter(out), mInfo(track.info) {}

    std::string form() const override { return "VP9 in IVF"; }
    void begin() override {
        Bytes header;
        appendText(header, "DKIF");
        appendLittle(header, 0, 2);   // version
        appendLittle(header, 32, 2);  // bytes in this header
        appendText(header, "VP90");
        appendLittle(header, uint16_t(mInfo.width.value_or(0)), 2);
        appendLittle(header, uint16_t(mInfo.height.value_or(0)), 2);
        appendLittle(header, 1000000, 4);  // time units a second
        appendLittle(header, 1, 4);
        appendLittle(header, 0, 4);  // frames, filled in at the end
        appendLittle(header, 0, 4);
        mOut.write(header);
    }
    void write(const ExtractUnit& unit) override {
        Bytes header;
        appendLittle(header, unit.size, 4);
        appendLittle(header, uint64_t(unit.timeUs), 8);
        mOut.write(header);
        mOut.write(unit.data, unit.size);
        ++mFrames;
    }
    void finish() override {
        Bytes frames;
        appendLittle(frames, mFrames, 4);
        mOut.patch(24, frames);
    }

  private:
    const TrackInfo mInfo;
    uint64_t mFrames = 0;
};

// Puts the headers in front unless the first unit brings them along.
class MpegVideoWriter : public ExtractWriter {
  public:
    MpegVideoWriter(std::string form, Bytes headers, uint8_t firstCode, ExtractFile& out)
        : ExtractWriter(out), mForm(std::move(form)), mHeaders(std::move(headers)), mFirstCode(firstCode) {}

    std::string form() const override { return mForm; }
    void write(const ExtractUnit& unit) override {
        if (!mStarted && !beginsWithHeader(unit)) mOut.write(mHeaders);
        mStarted = true;
        mOut.write(unit.data, unit.size);
    }

  private:
    bool beginsWithHeader(const ExtractUnit& unit) const {
        const uint8_t header[] = {0, 0, 1, mFirstCode};
        return unit.size >= sizeof header && std::equal(std::begin(header), std::end(header), unit.data);
    }

    std::string mForm;
    Bytes mHeaders;
    uint8_t mFirstCode;
    bool mStarted = false;
};

bool beginsWithStartCode(const Bytes& bytes) {
    return bytes.size() >= 3 && bytes[0] == 0 && bytes[1] == 0 && bytes[2] == 1;
}

}  // namespace

ExtractWriterPtr makeNalWriter(const ExtractTrack& track, ExtractFile& out) {
    const bool isAvc = track.info.mime == android::MEDIA_MIMETYPE_VIDEO_AVC;
    const Bytes record = configOf(track.info, isAvc ? "avcc" : "hvcc");
    const std::optional<unsigned> lengthBytes = isAvc ? avccLengthBytes(record) : hvccLengthBytes(record);
    if (lengthBytes && *lengthBytes != android::kNalLengthBytes)
        throw ExtractRefusal(
            fmt::format("its NAL units have {}-byte lengths, and the plug-in turns only 4-byte lengths into "
                        "start codes",
                        *lengthBytes));
    const Bytes parameterSets = isAvc ? avccParameterSets(record) : hvccParameterSets(record);
    return makePlainWriter(isAvc ? "H.264 byte stream" : "HEVC byte stream", parameterSets, out);
}

ExtractWriterPtr makeMpegVideoWriter(const ExtractTrack& track, ExtractFile& out) {
    constexpr uint8_t kSequenceHeader = 0xB3;  // ISO/IEC 13818-2, 6.2.1
    const bool isFirst = track.info.mime == android::MEDIA_MIMETYPE_VIDEO_MPEG1;
    const Bytes headers = beginsWithStartCode(track.codecPrivate) ? track.codecPrivate : Bytes();
    return std::make_unique<MpegVideoWriter>(isFirst ? "MPEG-1 video" : "MPEG-2 video", headers,
                                             kSequenceHeader, out);
}

ExtractWriterPtr makeMpeg4Writer(const ExtractTrack& track, ExtractFile& out) {
    constexpr uint8_t kSequenceStart = 0xB0;  // ISO/IEC 14496-2, 6.2.1
    if (!track.specificInfo.empty() && !beginsWithStartCode(track.specificInfo))
        throw ExtractRefusal("its frames have no start codes, so that nothing tells where one ends");
    return std::make_unique<MpegVideoWriter>("MPEG-4 part 2 video", track.specificInfo, kSequenceStart, out);
}

ExtractWriterPtr makeIvfWriter(const ExtractTrack& track, ExtractFile& out) {
    return std::make_unique<IvfWriter>(track, out);
}

}  // namespace mkvx
