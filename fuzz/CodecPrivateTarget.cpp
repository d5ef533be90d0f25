// Codec configuration and stream inspection: the pure functions that look at bytes which a file chose.
//
// Front, 8 bytes: which function (modulo the table's length), an index, four bytes of a rate, channels, one
// byte not used. The rest is what is looked at, in an allocation of exactly its size.
#include <utils/Errors.h>
#include <utils/String8.h>
#include <media/stagefright/MetaData.h>
#include <media/stagefright/foundation/ABuffer.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "Assertions.h"
#include "FuzzTarget.h"
#include "include/avc_utils.h"
#include "matroska/AacProbe.h"
#include "matroska/CodecPrivate.h"
#include "matroska/ElementaryStream.h"
#include "matroska/SubtitleMerge.h"
#include "utils/CodecConfig.h"
#include "utils/NalRewrite.h"

namespace fuzz {

namespace {

using android::MetaData;
using android::sp;

constexpr size_t kFrontSize = 8;

struct Input {
    uint8_t index;
    uint32_t rate;
    uint8_t channels;
    Bytes bytes;  // shrunk to fit, so that one byte too far is seen

    uint8_t* data() { return bytes.data(); }
    const uint8_t* data() const { return bytes.data(); }
    unsigned size() const { return static_cast<unsigned>(bytes.size()); }
};

Bytes DataOf(const sp<MetaData>& meta, uint32_t key) {
    uint32_t type = 1;
    const void* data = nullptr;
    size_t size = 0;
    if (!meta->findData(key, &type, &data, &size)) return {};
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    return Bytes(bytes, bytes + size);
}

void CheckVorbis(Input& input) {
    const char* condition = nullptr;
    const bool isSound = android::VorbisHeadersAccepted(input.data(), input.size(), &condition);
    const sp<MetaData> meta = new MetaData;
    RequireAssertion(Catch([&] { android::addVorbis2CodecInfo(meta, input.data(), input.size()); }),
                     condition);
    Require(isSound == (condition == nullptr), "what is refused has its reason");
    if (!isSound) return;
    const Bytes& bytes = input.bytes;
    const auto identification = bytes.begin() + 3, setup = identification + bytes[1] + bytes[2];
    Require(DataOf(meta, android::kKeyVorbisInfo) == Bytes(identification, identification + bytes[1]) &&
                DataOf(meta, android::kKeyVorbisBooks) == Bytes(setup, bytes.end()),
            "the identification and setup headers are stored");
}

// The configuration without codec private, then the library's opinion of the bytes.
void CheckAac(Input& input) {
    static const char* const kIds[] = {
        "A_AAC",           "A_AAC/MPEG2/LC",     "A_AAC/MPEG4/LC/SBR", "a_aac/mpeg4/ltp", "A_AAC/MPEG4/MAIN",
        "A_AAC/MPEG4/SSR", "A_AAC/MPEG2/LC/SBR", "A_AAC/MPEG4/LC"};
    const char* id = kIds[input.index % 8];
    uint8_t config[2] = {0xEE, 0xEE};
    float rate;
    std::memcpy(&rate, &input.rate, 4);
    const bool isMade =
        android::MakeAacSpecificConfig(id, (input.index & 8) != 0 ? rate : input.rate, input.channels,
                                       config) == android::AacConfigVerdict::kOk;
    Require(isMade || (config[0] == 0xEE && config[1] == 0xEE),
            "a refused configuration leaves the output alone");
    Require(!isMade || (config[0] >> 3 == 2 || config[0] >> 3 == 4), "the object type is LC or LTP");
    android::AacProbe probe;
    (void)probe.Probe(input.data(), input.size());
}

void CheckEsds(Input& input) {
    const sp<MetaData> meta = new MetaData;
    android::AddESDSFromSpecificInfo(meta, input.bytes.empty() ? nullptr : input.data(), input.size());
    const Bytes esds = DataOf(meta, android::kKeyESDS);
    Require(esds.empty() == input.bytes.empty(), "a record is stored for every configuration");
    if (esds.empty()) return;
    // The record ends with the configuration; for a few sizes its last byte does not fit.
    const bool isWhole =
        esds.size() >= input.size() && std::equal(input.bytes.rbegin(), input.bytes.rend(), esds.rbegin());
    const bool lacksOne = esds.size() >= input.size() - 1 &&
                          std::equal(input.bytes.rbegin() + 1, input.bytes.rend(), esds.rbegin());
    Require(isWhole || lacksOne, "the record ends with the configuration");
}

void CheckNalRewrite(Input& input) {
    const Bytes before = input.bytes;
    const int size = static_cast<int>(input.size());
    const int type = android::CheckH264Type(input.data(), size);
    Require(type == (size < 4                                                     ? -1
                     : std::equal(before.begin(), before.begin() + 4, "\0\0\0\1") ? 0
                                                                                  : 1),
            "the type is told by the start code");
    const unsigned whole = android::H264DataPreprocess_AVC(input.data(), size);
    Require(whole <= input.size() + 4, "rewriting reaches four bytes past the frame at the most");
    if (whole <= input.size())
        Require(android::CheckH264Type(input.data(), size) == (whole > 0 ? 0 : type),
                "the first length is rewritten");
}

void CheckInspection(Input& input) {
    const uint8_t* data = input.data();
    const size_t size = input.size();
    if (android::StartsWithSequenceParameterSet(data, size) && android::HoldsParameterSets(data, size)) {
        // The platform's function ends the process over what it does not like; the check in front is to
        // prevent that.
        (void)android::MakeAVCCodecSpecificData(new android::ABuffer(input.data(), size));
    }
    Require(android::FindFirstVop(data, size) <= std::min<size_t>(200, size < 4 ? 0 : size - 4),
            "headers end within the frame");
    const int extra = android::PreProcessM4vExtraData(input.data(), input.size());
    Require(extra >= 0 && static_cast<size_t>(extra) <= size, "extra data ends within the frame");
    int flags = 0, rate = 0, bits = 0;
    const int length = android::ParseA52SyncInfo(data, size, &flags, &rate, &bits);
    Require(length >= 0 && (length == 0 || (rate >= 4000 && rate <= 48000 && bits > 0)),
            "an A/52 header's values");
    (void)android::NeedsExtraDataStep(data, size);
    uint8_t header[android::kBitmapHeaderSize];
    android::WriteBitmapHeader(header, input.rate, input.channels, input.index);
}

void CheckSubtitles(Input& input) {
    const char* text = reinterpret_cast<const char*>(input.data());
    const ssize_t comma = android::FindEighthComma(text, input.size());
    size_t expected = 0;
    int left = 8;
    for (size_t i = 1; i < input.size() && left > 0; ++i) {
        if (text[i] == ',' && --left == 0) expected = i;
    }
    Require(comma == (left == 0 ? static_cast<ssize_t>(expected) : -1),
            "the eighth comma behind the first byte");
    if (comma < 0) return;
    const size_t at = static_cast<size_t>(comma), newSize = std::min<size_t>(input.index, input.size());
    Bytes merged(android::MergedSize(newSize, input.size(), at));
    merged.shrink_to_fit();
    android::MergeEvents(merged.data(), input.data(), newSize, input.data(), input.size(), at);
    Bytes plain(input.bytes.begin(), input.bytes.begin() + static_cast<long>(newSize));
    plain.push_back('\n');
    plain.insert(plain.end(), input.bytes.begin() + comma + 1, input.bytes.end());
    Require(merged == plain, "events are merged as described");
}

void (*const kChecks[])(Input&) = {CheckVorbis,     CheckAac,        CheckEsds,
                                   CheckNalRewrite, CheckInspection, CheckSubtitles};

}  // namespace

void RunCodecPrivate(const uint8_t* data, size_t size) {
    if (size < kFrontSize) return;
    Input input;
    input.index = data[1];
    std::memcpy(&input.rate, data + 2, 4);
    input.channels = data[6];
    input.bytes.assign(data + kFrontSize, data + size);
    input.bytes.shrink_to_fit();
    kChecks[data[0] % (sizeof(kChecks) / sizeof(kChecks[0]))](input);
}

}  // namespace fuzz
