// Audio: ADTS, FLAC and WAV.
#include <fmt/format.h>
#include <algorithm>
#include <limits>

#include "device/AudioConfig.h"
#include "extract/Facts.h"
#include "extract/Writer.h"

namespace mkvx {
namespace {

constexpr size_t kWaveFormatSize = 18;  // without what a codec appends

bool isWaveFormat(const ExtractTrack& track) {
    return track.codecId == "A_MS/ACM" && track.codecPrivate.size() >= kWaveFormatSize;
}

// ---- AAC

// As ADTS numbers them; one behind the last where there is none.
uint32_t frequencyIndex(const AudioConfig& config) {
    return uint32_t(std::find(kAacFrequencies.begin(), kAacFrequencies.end(), config.frequency) -
                    kAacFrequencies.begin());
}

// The frames with a fixed and variable ADTS header each, ISO/IEC 14496-3, 1.A.2.2.
class AdtsWriter : public ExtractWriter {
  public:
    AdtsWriter(const AudioConfig& config, ExtractFile& out) : ExtractWriter(out), mConfig(config) {}

    std::string form() const override { return "AAC in ADTS"; }
    bool wantsFrames() const override { return true; }
    void write(const ExtractUnit& unit) override {
        const uint8_t* frame = unit.data;
        for (const uint64_t size : unit.frames) {
            writeFrame(frame, size_t(size));
            frame += size;
        }
    }

  private:
    void writeFrame(const uint8_t* frame, size_t frameSize) {
        constexpr size_t kHeader = 7, kMost = 0x1FFF;
        const size_t size = frameSize + kHeader;
        if (size > kMost)
            throw ExtractRefusal(fmt::format("a frame of {} bytes is too long for ADTS", frameSize));
        const uint32_t profile = mConfig.coreType - 1;
        const uint8_t header[kHeader] = {
            0xFF,
            0xF1,  // MPEG-4, no checksum
            uint8_t(profile << 6 | frequencyIndex(mConfig) << 2 | mConfig.channels >> 2),
            uint8_t((mConfig.channels & 3) << 6 | size >> 11),
            uint8_t(size >> 3),
            uint8_t((size & 7) << 5 | 0x1F),  // buffer fullness: variable rate
            0xFC,                             // one raw data block
        };
        mOut.write(header, sizeof header);
        mOut.write(frame, frameSize);
    }

    AudioConfig mConfig;
};

// ---- PCM and what else has a wave format

class WavWriter : public ExtractWriter {
  public:
    WavWriter(Bytes format, size_t swappedSample, ExtractFile& out)
        : ExtractWriter(out), mFormat(std::move(format)), mSwappedSample(swappedSample) {}

    std::string form() const override { return "WAV"; }
    void begin() override {
        Bytes header;
        appendText(header, "RIFF");
        appendLittle(header, 0, 4);  // sizes are filled in at the end
        appendText(header, "WAVEfmt ");
        appendLittle(header, mFormat.size(), 4);
        header.insert(header.end(), mFormat.begin(), mFormat.end());
        if (header.size() % 2 != 0) header.push_back(0);
        appendText(header, "data");
        appendLittle(header, 0, 4);
        mHeaderSize = header.size();
        mOut.write(header);
    }
    void write(const ExtractUnit& unit) override {
        if (mSwappedSample < 2) return mOut.write(unit.data, unit.size);
        Bytes samples(unit.data, unit.data + unit.size);
        for (size_t at = 0; at + mSwappedSample <= samples.size(); at += mSwappedSample)
            std::reverse(samples.begin() + ptrdiff_t(at), samples.begin() + ptrdiff_t(at + mSwappedSample));
        mOut.write(samples);
    }
    void finish() override {
        const uint64_t data = mOut.size() - mHeaderSize;
        if (data % 2 != 0) mOut.write("\0", 1);
        mOut.patch(4, size32(mOut.size() - 8));
        mOut.patch(mHeaderSize - 4, size32(data));
    }

  private:
    // Readers take the largest value for "until the end".
    static Bytes size32(uint64_t size) {
        Bytes bytes;
        appendLittle(bytes, std::min<uint64_t>(size, std::numeric_limits<uint32_t>::max()), 4);
        return bytes;
    }

    Bytes mFormat;          // a WAVEFORMATEX, or its first 16 bytes
    size_t mSwappedSample;  // bytes of a big-endian sample; 0 for little-endian
    size_t mHeaderSize = 0;
};

Bytes pcmFormat(uint32_t rate, uint32_t channels, uint32_t bits) {
    constexpr uint32_t kPcm = 1;
    const uint32_t frame = channels * (bits / 8);
    Bytes format;
    appendLittle(format, kPcm, 2);
    appendLittle(format, channels, 2);
    appendLittle(format, rate, 4);
    appendLittle(format, uint64_t(rate) * frame, 4);
    appendLittle(format, frame, 2);
    appendLittle(format, bits, 2);
    return format;
}

// The file's own wave format, as long as it says it is.
Bytes formatChunk(const Bytes& codecPrivate) {
    const size_t extra = codecPrivate[16] | size_t(codecPrivate[17]) << 8;
    const size_t size = std::min(codecPrivate.size(), kWaveFormatSize + extra);
    Bytes format(codecPrivate.begin(), codecPrivate.begin() + ptrdiff_t(size));
    format[16] = uint8_t(size - kWaveFormatSize);
    format[17] = uint8_t((size - kWaveFormatSize) >> 8);
    return format;
}

}  // namespace

ExtractWriterPtr makeAdtsWriter(const ExtractTrack& track, ExtractFile& out) {
    Bytes bytes = track.specificInfo;
    if (isWaveFormat(track) && bytes.size() >= kWaveFormatSize)
        bytes.erase(bytes.begin(), bytes.begin() + kWaveFormatSize);
    if (bytes.size() < 2) throw ExtractRefusal("it has no AudioSpecificConfig");
    const AudioConfig config = audioConfig(bytes);
    if (config.coreType < 1 || config.coreType > 4)
        throw ExtractRefusal(fmt::format("ADTS cannot carry AAC object type {}", config.coreType));
    if (frequencyIndex(config) >= kAacFrequencies.size())
        throw ExtractRefusal("ADTS has no index for its sampling frequency");
    if (config.channels < 1 || config.channels > 7)
        throw ExtractRefusal(fmt::format("ADTS cannot carry channel configuration {}", config.channels));
    return std::make_unique<AdtsWriter>(config, out);
}

ExtractWriterPtr makeFlacWriter(const ExtractTrack& track, ExtractFile& out) {
    constexpr size_t kStreamInfo = 34, kBlockHeader = 4;  // RFC 9639, 8.1 and 8.2
    const Bytes& config = track.codecPrivate;
    static const char kMagic[] = "fLaC";
    const bool hasMagic = config.size() >= 4 && std::equal(kMagic, kMagic + 4, config.begin());
    const size_t at = hasMagic ? 4 + kBlockHeader : kWaveFormatSize;
    if (config.size() < at + kStreamInfo || !(hasMagic || isWaveFormat(track)))
        throw ExtractRefusal("it has no FLAC stream information");
    Bytes prefix;
    appendText(prefix, kMagic);
    prefix.insert(prefix.end(), {0x80, 0, 0, uint8_t(kStreamInfo)});  // the last block in front of the frames
    prefix.insert(prefix.end(), config.begin() + ptrdiff_t(at), config.begin() + ptrdiff_t(at + kStreamInfo));
    return makePlainWriter("FLAC", prefix, out);
}

ExtractWriterPtr makeWavWriter(const ExtractTrack& track, ExtractFile& out) {
    if (track.codecId == "A_MS/ACM") {
        if (!isWaveFormat(track)) throw ExtractRefusal("its wave format is cut short");
        return std::make_unique<WavWriter>(formatChunk(track.codecPrivate), 0, out);
    }
    const uint32_t bits = track.bitsPerSample;
    const auto rate = uint32_t(track.info.sampleRate.value_or(0));
    const auto channels = uint32_t(track.info.channels.value_or(0));
    if (bits == 0 || bits % 8 != 0 || bits > 64 || channels == 0 || channels > 255 || rate == 0)
        throw ExtractRefusal(
            fmt::format("{} bits, {} channels and {} Hz make no PCM format", bits, channels, rate));
    const bool isBigEndian = track.codecId.rfind("A_PCM/INT/BIG", 0) == 0;
    return std::make_unique<WavWriter>(pcmFormat(rate, channels, bits), isBigEndian ? bits / 8 : 0, out);
}

}  // namespace mkvx
