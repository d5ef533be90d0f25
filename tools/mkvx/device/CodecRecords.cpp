#include "device/CodecRecords.h"

#include <algorithm>
#include <string>

namespace mkvx {
namespace {

// Reads front to back. Past the end numbers are 0 and ranges are cut; whole() then says false for good.
class ByteReader {
  public:
    explicit ByteReader(const Bytes& bytes) : mAt(bytes.data()), mEnd(bytes.data() + bytes.size()) {}

    bool whole() const { return mWhole; }
    size_t left() const { return size_t(mEnd - mAt); }

    uint8_t u8() {
        if (mAt == mEnd) {
            mWhole = false;
            return 0;
        }
        return *mAt++;
    }
    uint16_t u16be() {
        const unsigned high = u8();
        return uint16_t(high << 8 | u8());
    }
    uint16_t u16le() {
        const unsigned low = u8();
        return uint16_t(low | unsigned(u8()) << 8);
    }
    uint32_t u32le() {
        const uint32_t low = u16le();
        return low | uint32_t(u16le()) << 16;
    }
    Bytes take(size_t size) {
        mWhole = mWhole && size <= left();
        const uint8_t* start = mAt;
        mAt += std::min(size, left());
        return Bytes(start, mAt);
    }
    void skip(size_t size) { take(size); }
    Bytes rest() { return take(left()); }

  private:
    const uint8_t* mAt;
    const uint8_t* mEnd;
    bool mWhole = true;
};

size_t sizeField(ByteReader& reader) {
    size_t value = 0;
    for (unsigned shift = 0; shift < 35; shift += 7) {  // at most five groups
        const uint8_t group = reader.u8();
        value |= size_t(group & 0x7F) << shift;
        if ((group & 0x80) == 0) break;
    }
    return value;
}

void append(Bytes& to, const Bytes& bytes) {
    to.insert(to.end(), bytes.begin(), bytes.end());
}

// `count` units, each behind its 16-bit length; the reader's end bounds the loop.
void appendNalUnits(Bytes& to, ByteReader& reader, unsigned count) {
    for (unsigned i = 0; i < count && reader.whole(); ++i) {
        const Bytes unit = reader.take(reader.u16be());
        if (!reader.whole()) break;
        append(to, {0, 0, 0, 1});
        append(to, unit);
    }
}

void appendLace(Bytes& to, size_t size) {
    to.insert(to.end(), size / 255, 255);
    to.push_back(uint8_t(size % 255));
}

Bytes emptyVorbisComments() {
    const std::string vendor = "mkvx";
    Bytes header{3, 'v', 'o', 'r', 'b', 'i', 's', uint8_t(vendor.size()), 0, 0, 0};
    header.insert(header.end(), vendor.begin(), vendor.end());
    append(header, {0, 0, 0, 0, 1});  // no comments, framing bit
    return header;
}

}  // namespace

Bytes specificInfo(const Bytes& esds) {
    ByteReader reader(esds);
    if (reader.u8() != 0x03) return {};
    sizeField(reader);
    reader.skip(3);  // ES_ID, flags
    if (reader.u8() != 0x04) return {};
    sizeField(reader);
    reader.skip(13);  // object type, stream type, buffer size, bit rates
    if (reader.u8() != 0x05) return {};
    const size_t size = sizeField(reader);
    if (!reader.whole() || (size != reader.left() && size != reader.left() + 1)) return {};
    return reader.rest();
}

Bytes avccParameterSets(const Bytes& avcc) {
    ByteReader reader(avcc);
    if (reader.u8() != 1) return {};
    reader.skip(4);  // profile, compatibility, level, length size
    Bytes sets;
    appendNalUnits(sets, reader, reader.u8() & 0x1F);
    appendNalUnits(sets, reader, reader.u8());
    return sets;
}

Bytes hvccParameterSets(const Bytes& hvcc) {
    ByteReader reader(hvcc);
    if (reader.u8() != 1) return {};
    reader.skip(21);
    Bytes sets;
    const unsigned arrays = reader.u8();
    for (unsigned i = 0; i < arrays && reader.whole(); ++i) {
        reader.skip(1);  // the units' type
        appendNalUnits(sets, reader, reader.u16be());
    }
    return sets;
}

Bytes vorbisHeaders(const Bytes& identification, const Bytes& setup) {
    const Bytes comments = emptyVorbisComments();
    Bytes headers{2};
    appendLace(headers, identification.size());
    appendLace(headers, comments.size());
    append(headers, identification);
    append(headers, comments);
    append(headers, setup);
    return headers;
}

std::optional<unsigned> avccLengthBytes(const Bytes& avcc) {
    constexpr size_t kAt = 4;  // ISO/IEC 14496-15, 5.3.3
    return avcc.size() > kAt ? std::optional<unsigned>((avcc[kAt] & 3u) + 1) : std::nullopt;
}

std::optional<unsigned> hvccLengthBytes(const Bytes& hvcc) {
    constexpr size_t kAt = 21;  // ISO/IEC 14496-15, 8.3.3
    return hvcc.size() > kAt ? std::optional<unsigned>((hvcc[kAt] & 3u) + 1) : std::nullopt;
}

std::optional<BitmapHeader> bitmapHeader(const Bytes& bytes) {
    constexpr size_t kSize = 40;
    ByteReader reader(bytes);
    if (bytes.size() < kSize || reader.u32le() < kSize) return std::nullopt;
    reader.skip(12);  // width, height, planes, bits
    BitmapHeader header;
    header.compression = reader.u32le();
    reader.skip(20);
    header.rest = reader.rest();
    return header;
}

std::optional<WaveFormat> waveFormat(const Bytes& bytes) {
    ByteReader reader(bytes);
    WaveFormat format;
    format.tag = reader.u16le();
    format.channels = reader.u16le();
    format.sampleRate = reader.u32le();
    format.byteRate = reader.u32le();
    format.blockAlign = reader.u16le();
    format.bitsPerSample = reader.u16le();
    const size_t size = reader.u16le();
    if (!reader.whole()) return std::nullopt;
    format.rest = reader.take(std::min(size, reader.left()));
    return format;
}

}  // namespace mkvx
