// Writing one track as a stream or file that ordinary tools open.
//
// A writer takes a track's units in order of delivery: construct (which refuses what cannot be written),
// begin(), write() each unit, finish(). Nothing reaches the file before begin(). One thread.
#pragma once
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "base/OutputFile.h"
#include "device/CodecRecords.h"
#include "device/Model.h"

namespace mkvx {

// What is known of a track: what the plug-in says, and from the file itself what a file format needs beyond
// that.
struct ExtractTrack {
    TrackInfo info;
    std::string codecId;
    Bytes codecPrivate;
    uint32_t bitsPerSample = 0;     // 0 when the file does not say
    bool hasEncodedFrames = false;  // in the file: what a block stores is not what is delivered
    Bytes specificInfo;             // the decoder specific information in the track's esds record
};

// One delivered unit; the bytes belong to the caller. Times are microseconds.
struct ExtractUnit {
    const uint8_t* data = nullptr;
    size_t size = 0;
    int64_t timeUs = 0;
    int64_t endUs = 0;  // subtitles only
    // The sizes of the frames that the unit is made of, for a writer that asks for them; one where it is not
    // laced.
    std::vector<uint64_t> frames;
};

// The track, or its units, cannot be put into the form that its codec has outside Matroska.
class ExtractRefusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class ExtractWriter {
  public:
    explicit ExtractWriter(ExtractFile& out) : mOut(out) {}
    virtual ~ExtractWriter() = default;

    // What comes out, for people: "Ogg Vorbis".
    virtual std::string form() const = 0;
    // Whether write() has to know the frames of a laced unit.
    virtual bool wantsFrames() const { return false; }
    virtual void begin() {}
    virtual void write(const ExtractUnit& unit) = 0;
    virtual void finish() {}

  protected:
    ExtractFile& mOut;
};

using ExtractWriterPtr = std::unique_ptr<ExtractWriter>;

// The writer for the track's codec. Throws ExtractRefusal when there is none. The arguments have to live as
// long as the writer.
ExtractWriterPtr makeExtractWriter(const ExtractTrack& track, ExtractFile& out);

// The units one behind the other, after `prefix`.
ExtractWriterPtr makePlainWriter(const std::string& form, Bytes prefix, ExtractFile& out);

// One per codec family; ExtractRefusal as above.
ExtractWriterPtr makeNalWriter(const ExtractTrack& track, ExtractFile& out);        // H.264, HEVC
ExtractWriterPtr makeMpegVideoWriter(const ExtractTrack& track, ExtractFile& out);  // MPEG-1, MPEG-2
ExtractWriterPtr makeMpeg4Writer(const ExtractTrack& track, ExtractFile& out);
ExtractWriterPtr makeIvfWriter(const ExtractTrack& track, ExtractFile& out);  // VP9
ExtractWriterPtr makeAdtsWriter(const ExtractTrack& track, ExtractFile& out);
ExtractWriterPtr makeFlacWriter(const ExtractTrack& track, ExtractFile& out);
ExtractWriterPtr makeWavWriter(const ExtractTrack& track, ExtractFile& out);
ExtractWriterPtr makeOggVorbisWriter(const ExtractTrack& track, ExtractFile& out);
ExtractWriterPtr makeSrtWriter(ExtractFile& out);
ExtractWriterPtr makeAssWriter(const ExtractTrack& track, ExtractFile& out);

}  // namespace mkvx
