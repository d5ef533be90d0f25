// Which codec is written how.
#include "extract/Writer.h"

#include "utils/MimeTypes.h"

namespace mkvx {
namespace {

class PlainWriter : public ExtractWriter {
  public:
    PlainWriter(std::string form, Bytes prefix, ExtractFile& out)
        : ExtractWriter(out), mForm(std::move(form)), mPrefix(std::move(prefix)) {}

    std::string form() const override { return mForm; }
    void begin() override { mOut.write(mPrefix); }
    void write(const ExtractUnit& unit) override { mOut.write(unit.data, unit.size); }

  private:
    std::string mForm;
    Bytes mPrefix;
};

bool startsWith(const std::string& text, const char* prefix) {
    return text.rfind(prefix, 0) == 0;
}

// The layers of MPEG audio share one MIME type.
std::string mpegAudioForm(const ExtractTrack& track) {
    if (startsWith(track.codecId, "A_MPEG/L2")) return "MPEG audio layer II";
    return startsWith(track.codecId, "A_MPEG/L3") ? "MP3" : "MPEG audio";
}

}  // namespace

ExtractWriterPtr makePlainWriter(const std::string& form, Bytes prefix, ExtractFile& out) {
    return std::make_unique<PlainWriter>(form, std::move(prefix), out);
}

ExtractWriterPtr makeExtractWriter(const ExtractTrack& track, ExtractFile& out) {
    using namespace android;
    const std::string& mime = track.info.mime;
    if (mime == MEDIA_MIMETYPE_VIDEO_AVC || mime == MEDIA_MIMETYPE_VIDEO_HEVC)
        return makeNalWriter(track, out);
    if (mime == MEDIA_MIMETYPE_VIDEO_MPEG1 || mime == MEDIA_MIMETYPE_VIDEO_MPEG2)
        return makeMpegVideoWriter(track, out);
    if (mime == MEDIA_MIMETYPE_VIDEO_MPEG4) return makeMpeg4Writer(track, out);
    if (mime == MEDIA_MIMETYPE_VIDEO_VP9) return makeIvfWriter(track, out);
    if (mime == MEDIA_MIMETYPE_VIDEO_H263) return makePlainWriter("H.263", {}, out);
    if (mime == MEDIA_MIMETYPE_AUDIO_AAC) return makeAdtsWriter(track, out);
    if (mime == MEDIA_MIMETYPE_AUDIO_MPEG) return makePlainWriter(mpegAudioForm(track), {}, out);
    if (mime == MEDIA_MIMETYPE_AUDIO_AC3) return makePlainWriter("AC-3", {}, out);
    if (mime == MEDIA_MIMETYPE_AUDIO_DTS) return makePlainWriter("DTS", {}, out);
    if (mime == MEDIA_MIMETYPE_AUDIO_FLAC) return makeFlacWriter(track, out);
    if (mime == MEDIA_MIMETYPE_AUDIO_VORBIS) return makeOggVorbisWriter(track, out);
    if (mime == MEDIA_MIMETYPE_SUBTITLE_UTF8) return makeSrtWriter(out);
    if (mime == MEDIA_MIMETYPE_SUBTITLE_ASS || mime == MEDIA_MIMETYPE_SUBTITLE_ASS2)
        return makeAssWriter(track, out);
    if (track.codecId == "A_MS/ACM" || startsWith(track.codecId, "A_PCM/")) return makeWavWriter(track, out);
    throw ExtractRefusal(mime + " (" + track.codecId + ") has no file form outside a container");
}

}  // namespace mkvx
