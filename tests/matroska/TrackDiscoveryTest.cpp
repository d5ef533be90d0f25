// Which tracks are offered, and with which metadata.
#include "matroska/MatroskaExtExtractor.h"
#include "matroska/MatroskaFixture.h"
#include "support/Golden.h"
#include "utils/OptionalCodecLibrary.h"

namespace testing_support {
namespace {

using namespace std::string_literals;

// What becomes of one track: its metadata, or why it is dropped. The file claims a size of 1000 bytes a
// second.
std::string Offered(const Element& track, const Elements& blocks = {}) {
    Faults faults;
    faults.claimSize = true;
    faults.claimedSize = 10000;
    Document file = Movie({track}, {Cluster(0, blocks)});
    if (file.bytes.size() < 10000) file.bytes.resize(10000);
    const sp<MediaExtractor> extractor = Open(file, faults);
    if (extractor->countTracks() > 0) return Describe(extractor->getTrackMetaData(0, 0));
    const char* const reasons[] = {"no reason",      "subtitle kind", "unmapped codec", "track type",
                                   "AAC no profile", "AAC frequency", "AAC profile",    "no parameter sets"};
    const auto& dropped = static_cast<android::MatroskaExtExtractor*>(extractor.get())->DroppedTracks();
    return "dropped: " + std::string(reasons[static_cast<int>(dropped[0].mReason)]);
}

// A bitmap header of which a byte is missing.
Bytes ShortBitmapHeader() {
    Bytes header = BitmapHeader("XVID");
    header.pop_back();
    return header;
}

// Three headers of a Vorbis stream in one-byte laces: 30 bytes, 16 bytes, the rest.
Bytes VorbisPrivate() {
    return Concat(
        {Hex("021E10"), Hex("01"), Bytes(29, 0xA1), Hex("03"), Bytes(15, 0xA3), Hex("05"), Bytes(4, 0xA5)});
}

// What is offered of tracks of every kind, as a kept text: its metadata, or why it is dropped.
TEST(Discovery, TracksOfEveryKind) {
    const Element audio = Audio(44100, 2), deep = Audio(44100, 2, {Uint(id::kBitDepth, 24)});
    const Element video = Video(64, 48), config = Private(Hex("1210"));
    const Element frame = SimpleBlock(1, 0, kKeyFrame, Hex("000001B0 01 000001B5 09 000001B6 10 AABB"));
    const Element sets =
        SimpleBlock(1, 0, kKeyFrame, Hex("00000001 6742001EDA11E4 00000001 68CE3880 00000001 6588"));
    const auto sound = [](const char* codec, const Elements& parts) {
        return Track(1, kAudioType, codec, parts);
    };
    const auto wave = [](const char* tag) {
        return Private(Hex(tag + std::string("0200 44AC0000 803E0000 0100 1000 0000")));
    };
    const auto picture = [](const char* codec, const Elements& parts) {
        return Track(1, kVideoType, codec, parts);
    };
    const auto bitmap = [&](const Bytes& header) {
        return picture("V_MS/VFW/FOURCC", {video, Private(header)});
    };
    const struct {
        const char* name;
        Element track;
        Elements blocks;
    } rows[] = {
        {"MP3", sound("A_MPEG/L3", {audio}), {}},
        {"defaults of Audio", sound("A_MPEG/L2", {}), {}},
        {"AC-3", sound("A_AC3", {audio}), {}},
        {"codec private becomes an ESDS", sound("A_DTS", {audio, config}), {}},
        {"FLAC has a flag", sound("A_FLAC", {audio}), {}},
        {"PCM keeps no bit depth", sound("A_PCM/INT/LIT", {deep}), {}},
        {"LPCM does", sound("A_PCM/INT/BIG", {deep, config}), {}},
        {"a fractional rate", sound("A_MPEG/L3", {Audio(11025.9, 2)}), {}},
        {"a rate beyond 32 bits", sound("A_MPEG/L3", {Audio(1e12, 2)}), {}},
        {"AAC with codec private", sound("A_AAC", {audio, config}), {}},
        {"AAC from its name", sound("A_AAC/MPEG4/LC", {audio}), {}},
        {"AAC in lower case", sound("a_aac/mpeg4/lc", {audio}), {}},
        {"AAC with one byte of codec private", sound("A_AAC", {audio, Private(Hex("12"))}), {}},
        {"AAC without a profile", sound("A_AAC", {audio}), {}},
        {"AAC at an odd rate", sound("A_AAC/MPEG4/LC", {Audio(7350, 2)}), {}},
        {"AAC of an unsupported profile", sound("A_AAC/MPEG4/MAIN", {audio}), {}},
        {"Vorbis", sound("A_VORBIS", {audio, Private(VorbisPrivate())}), {}},
        {"wave format", sound("A_MS/ACM", {audio, wave("5500")}), {}},
        {"an unknown wave format", sound("A_MS/ACM", {audio, wave("9999")}), {}},
        {"unknown audio codec", sound("A_OPUS", {audio}), {}},
        {"AVC", AvcTrack(), {}},
        {"HEVC", picture("V_MPEGH/ISO/HEVC", {video, Private(Hex("010203040506"))}), {}},
        {"VP9", picture("V_VP9", {video}), {frame}},
        {"VP8 has a tag that nobody knows", picture("V_VP8", {video}), {}},
        {"MPEG-2: a bitmap header in front", picture("V_MPEG2", {video, Private(Hex("AABB"))}), {}},
        {"RealVideo", picture("V_REAL/RV40", {video}), {}},
        {"MPEG-4 with its configuration", picture("V_MPEG4/ISO/ASP", {video, config}), {}},
        {"MPEG-4, configuration from the first frame", bitmap(BitmapHeader("XVID")), {frame}},
        {"MPEG-4 without anything", picture("V_MPEG4/ISO/ASP", {video}), {frame}},
        {"a short bitmap header", bitmap(ShortBitmapHeader()), {}},
        {"an unknown compression", bitmap(BitmapHeader("ZZZZ")), {}},
        {"lower-case compression", bitmap(BitmapHeader("flv1")), {}},
        {"AVC in a bitmap header, sets in the stream", bitmap(BitmapHeader("H264")), {sets}},
        {"AVC in a bitmap header, no sets",
         bitmap(BitmapHeader("H264")),
         {SimpleBlock(1, 0, kKeyFrame, Hex("00000001 6588"))}},
        {"no Video element", picture("V_VP9", {}), {}},
        {"unknown video codec", picture("V_THEORA", {video}), {}},
    };
    std::string text;
    for (const auto& row : rows) text += std::string(row.name) + ": " + Offered(row.track, row.blocks) + "\n";
    const char* const subtitles[] = {"S_TEXT/UTF8", "S_TEXT/ASS",  "S_TEXT/SSA", "S_TEXT/ASS2", "S_VOBSUB",
                                     "S_KATE",      "S_IMAGE/BMP", "S_TEXT/USF", "S_HDMV/PGS"};
    for (const char* codec : subtitles) text += codec + (": " + Offered(TextTrack(1, codec))) + "\n";
    const Elements named = {Str(id::kName, "Forced!"), Str(id::kLanguage, "eng")};
    text += "named text: " + Offered(Track(1, kSubtitleType, "S_TEXT/UTF8", named)) + "\n";
    const char* const languages[] = {"eng", "en", "en-", "chi", "che", "ENG", "ger", "x", ""};
    for (const char* language : languages)
        text += language + (": " + Offered(picture("V_VP9", {Str(id::kLanguage, language)}))) + "\n";
    for (const std::string& name : {"Director"s, "A"s, "ab\0cd"s})
        text += name.c_str() + (": " + Offered(picture("V_VP9", {Str(id::kName, name), named[1]}))) + "\n";
    for (uint64_t type : {0ull, 3ull, 0x10ull, 0x12ull, 0x20ull, (1ull << 32) + 1, (1ull << 32) + 2})
        text += std::to_string(type) + ": " + Offered(Track(1, type, "A_MPEG/L3", {audio})) + "\n";
    // A decoder of the platform serves what has no configuration or one that is refused. Tag 0xFF has none.
    android::OptionalCodecLibrary& decoders = android::OptionalCodecLibrary::Installed();
    const char* const device = decoders.path();
    decoders.setPath(CODEC_IDS_LIBRARY);
    text += "platform's MPEG-4: " + Offered(picture("V_MPEG4/ISO/ASP", {video})) + "\n";
    // LC, Main, LTP, object type 0; a reserved frequency and a cut one say nothing about the format.
    for (const char* aac : {"1210", "0A10", "2210", "0000", "1690", "1780"})
        text += aac + (": " + Offered(sound("A_REAL/RAAC", {audio, Private(Hex(aac))}))) + "\n";
    text += "AAC for nobody: " + Offered(sound("A_AAC", {audio, Private(Hex("0A10"))})) + "\n";
    decoders.setPath(device);
    ExpectGolden("matroska/golden/discovered-tracks", text);
}

TEST(Discovery, BitRateEstimate) {
    const Document oneTracks = Movie({Mpeg2Track(1), Mp3Track(2)}, {Cluster(0, {})}, 100000);
    const Document twoTracks =
        Write({EbmlHeader(),
               Segment({Info(100000), Master(id::kTracks, {Mpeg2Track(1)}),
                        Master(id::kTracks, {Mp3Track(2)}), Master(id::kCues, {Bin(id::kVoid, Bytes(1))})})});
    const struct {
        const char* name;
        const Document* file;
        double duration;
        off64_t size;
        status_t sizeStatus;
        int32_t bitRate;
    } rows[] = {
        {"the file's average", &oneTracks, 100000, 100000000, android::OK, 8000000},
        {"several Tracks elements", &twoTracks, 100000, 100000000, android::OK, 0},
        {"no duration", nullptr, 0, 100000000, android::OK, 0},
        {"the product wraps", &oneTracks, 100000, 3000000000, android::OK, 55532559},
        {"unknown length", &oneTracks, 100000, 100000000, android::UNKNOWN_ERROR, 0},
        {"negative length", &oneTracks, 100000, -5, android::OK, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Faults faults;
        faults.claimSize = true;
        faults.claimedSize = row.size;
        faults.sizeStatus = row.sizeStatus;
        const Document file =
            row.file != nullptr ? *row.file : Movie({Mpeg2Track(1), Mp3Track(2)}, {Cluster(0, {})}, 0);
        const sp<MediaExtractor> extractor = Open(file, faults);
        ASSERT_EQ(2u, extractor->countTracks());
        for (size_t i = 0; i < 2; ++i) {
            int32_t bitRate = -1;
            extractor->getTrackMetaData(i, 0)->findInt32(android::kKeyBitRate, &bitRate);
            EXPECT_EQ(row.bitRate, bitRate);
        }
    }
}

TEST(Discovery, NegativeRatesAreNone) {
    Bytes wave(18);
    wave[0] = 0x55;
    wave[11] = 0x10;  // 2^28 bytes a second
    const sp<MediaExtractor> extractor = Open(
        Movie({Track(1, kAudioType, "A_MS/ACM", {Audio(-44100, 2), Private(wave)})}, {Cluster(0, {})}, 0));
    for (const uint32_t key : {android::kKeySampleRate, android::kKeyBitRate}) {
        int32_t rate = -1;
        EXPECT_TRUE(extractor->getTrackMetaData(0, 0)->findInt32(key, &rate));
        EXPECT_EQ(0, rate);
    }
}

TEST(Discovery, OrderIsTheOrderOfTheEntries) {
    const sp<MediaExtractor> extractor = Open(Write(
        {EbmlHeader(),
         Segment({Info(1), Master(id::kTracks, {TextTrack(9), Track(1, kVideoType, "V_THEORA"), Mp3Track(2)}),
                  Master(id::kTracks, {Mpeg2Track(3)})})}));
    ASSERT_EQ(3u, extractor->countTracks());
    const char* const mimes[] = {"text/utf-8", "audio/mpeg", "video/mpeg2"};
    for (size_t i = 0; i < 3; ++i) {
        const char* mime = nullptr;
        extractor->getTrackMetaData(i, 0)->findCString(android::kKeyMIMEType, &mime);
        EXPECT_STREQ(mimes[i], mime);
    }
}

TEST(Discovery, Logs) {
    const struct {
        const char* name;
        Element track;
        std::vector<LogRecord> records;
    } rows[] = {
        {"offered", Mp3Track(1), {{ANDROID_LOG_DEBUG, kTag, "addTracks(mime): audio/mpeg"}}},
        {"subtitles say nothing", TextTrack(1), {}},
        {"unmappable", Track(1, kVideoType, "V_THEORA"), {}},
        {"another type has no codec tag", Track(3, 3, "A_AAC", {Private(Hex("1210"))}), {}},
        {"made",
         Track(1, kAudioType, "a_aac/mpeg4/lc", {Audio(48000, 6)}),
         {{ANDROID_LOG_DEBUG, kTag, "addTracks(mime): audio/mp4a-latm"},
          {ANDROID_LOG_DEBUG, kTag, "Make codec info 0x11, 0xb0"}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Document file = Movie({row.track}, {Cluster(0, {})});
        LogCapture log;
        Open(file);
        EXPECT_EQ(row.records, log.WithTag(kTag));
    }
}

}  // namespace
}  // namespace testing_support
