// Writes EBML documents byte for byte from a tree whose lines name element and value:
//
//     Document file = Write({EbmlHeader("matroska"),
//                            Segment({Master(id::kInfo, {Uint(id::kTimecodeScale, 1000000)}),
//                                     Cluster(0, {SimpleBlock(1, 0, kKeyFrame,
//                                     {Hex("0102")})}).Label("first")})});
//     file.bytes; file.HeaderOf("first");
//
// The tree is written as it stands: nothing is added, checked or repaired, so that a test can say exactly
// what is wrong with a file. Sizes are as short as they can be unless an element says otherwise.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "matroska/reader/ElementIds.h"

namespace testing_support {

namespace id = MatroskaExtReader::id;

using Bytes = std::vector<uint8_t>;

Bytes Hex(const std::string& digits);  // blanks are ignored
std::string ToHex(const uint8_t* data, size_t size);
std::string ToHex(const Bytes& bytes);
Bytes Text(const std::string& text);
Bytes Pattern(size_t size, uint8_t seed);  // differs for every seed and position
Bytes Concat(const std::vector<Bytes>& parts);
Bytes BigEndian(uint64_t value, int width);

// Size field or track number, RFC 8794, 4: `width` 0 takes the shortest that is not the unknown marker.
Bytes Vint(uint64_t value, int width = 0);
Bytes UnknownVint(int width);                    // all value bits set
Bytes SignedVint(int64_t value, int width = 0);  // difference of lace sizes, RFC 9559, 10.3.3

class Element {
  public:
    Element(uint32_t elementId, Bytes payload) : mId(elementId), mPayload(std::move(payload)) {}
    Element(uint32_t elementId, std::vector<Element> children)
        : mId(elementId), mChildren(std::move(children)) {}

    // A name by which the written document tells where this element stands.
    Element Label(std::string name) const;
    // The size field takes `width` bytes.
    Element SizeWidth(int width) const;
    // The size field is the unknown marker of `width` bytes.
    Element UnknownSize(int width = 8) const;
    // The size field says `size`, whatever follows it.
    Element DeclaredSize(uint64_t size) const;
    // ID and size field are replaced by these bytes.
    Element Header(Bytes header) const;

  private:
    friend class Writer;
    friend Element PositionOf(uint32_t elementId, std::string label);
    uint32_t mId = 0;
    Bytes mPayload;
    std::vector<Element> mChildren;
    std::string mLabel;
    std::string mTarget;  // of a position element
    int mSizeWidth = 0;
    bool mUnknownSize = false;
    std::optional<uint64_t> mDeclaredSize;
    std::optional<Bytes> mHeader;
};

using Elements = std::vector<Element>;

Element Master(uint32_t elementId, Elements children);
Element Uint(uint32_t elementId, uint64_t value, int width = 0);  // width 0: shortest, at least one byte
Element Int(uint32_t elementId, int64_t value, int width);
Element Flt(uint32_t elementId, double value);  // 8 bytes
Element Flt4(uint32_t elementId, float value);  // 4 bytes
Element Str(uint32_t elementId, const std::string& value);
Element Bin(uint32_t elementId, Bytes value);
Element Raw(Bytes bytes);  // no header at all
// Eight bytes: where the labelled element's header stands, counted from the enclosing Segment's data start.
Element PositionOf(uint32_t elementId, std::string label);
Element IdValue(uint32_t elementId, uint32_t value);  // an element whose payload is an element ID

struct Document {
    struct Place {
        uint64_t header = 0, data = 0, end = 0;
    };
    Bytes bytes;
    std::map<std::string, Place> places;

    // A label that was not written fails the test program: it is a mistake in the test.
    const Place& At(const std::string& label) const;
    uint64_t HeaderOf(const std::string& label) const { return At(label).header; }
    uint64_t DataOf(const std::string& label) const { return At(label).data; }
    uint64_t EndOf(const std::string& label) const { return At(label).end; }
};

Document Write(const Elements& elements);

// --- Blocks (RFC 9559, 10) ---

enum class Lacing { kNone = 0, kXiph = 1, kFixed = 2, kEbml = 3 };
constexpr uint8_t kKeyFrame = 0x80;

// Count, sizes and frames as a block holds them after its flags byte.
Bytes Laced(Lacing lacing, const std::vector<Bytes>& frames);
// Header and `payload` of a block; `flags` carries the lacing bits already.
Bytes BlockBytes(uint64_t track, int16_t timecode, uint8_t flags, const Bytes& payload);
Bytes BlockBytes(uint64_t track, int16_t timecode, uint8_t flags, Lacing lacing,
                 const std::vector<Bytes>& frames);

Element SimpleBlock(uint64_t track, int16_t timecode, uint8_t flags, const Bytes& frame);
Element SimpleBlock(uint64_t track, int16_t timecode, uint8_t flags, Lacing lacing,
                    const std::vector<Bytes>& frames);
Element BlockGroup(uint64_t track, int16_t timecode, const Bytes& frame, Elements others = {});
Element Cluster(uint64_t timecode, Elements blocks);

// --- Pieces that most files have ---

Element EbmlHeader(const std::string& docType = "matroska", uint64_t readVersion = 2);
Element Segment(Elements children);
Element Info(double duration, uint64_t timecodeScale = 1000000);
Element Track(uint64_t number, uint64_t type, const std::string& codecId, Elements others = {});
Element Video(uint64_t width, uint64_t height);
Element Audio(double samplingFrequency, uint64_t channels, Elements others = {});
constexpr uint64_t kVideoType = 1, kAudioType = 2, kSubtitleType = 17;
Element Mpeg2Track(uint64_t number = 1, Elements others = {});
Element Mp3Track(uint64_t number = 2, Elements others = {});
Element TextTrack(uint64_t number, const std::string& codecId = "S_TEXT/UTF8");
Element Private(const Bytes& bytes);
// A bitmap header of 40 bytes with this compression code.
Bytes BitmapHeader(const std::string& compression);
Element SeekHead(const std::vector<std::pair<uint32_t, std::string>>& idAndLabel);
Element CuePoint(uint64_t time, uint64_t track, const std::string& clusterLabel);
// One ContentEncoding; `settings` only where not empty.
Element Encoding(uint64_t order, uint64_t type, uint64_t algorithm, const Bytes& settings = {});
// EBML header, Info, one MPEG-2 track (`trackParts` in it), one Cluster with these blocks.
Document OneTrack(const Elements& blocks, Elements trackParts = {});

Bytes Zlib(const Bytes& plain, int level = 9);  // one zlib stream

}  // namespace testing_support
