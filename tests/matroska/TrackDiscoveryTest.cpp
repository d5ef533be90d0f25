// Which tracks are offered, and with which metadata.
#include "matroska/MatroskaFixture.h"

namespace testing_support {
namespace {

// The record around a decoder configuration of at most 107 bytes, in hex.
std::string Esds(const Bytes& config) {
    const auto size = static_cast<uint8_t>(config.size());
    return ToHex(
        Concat({{0x03, static_cast<uint8_t>(size + 20), 0, 0, 0, 0x04, static_cast<uint8_t>(size + 15), 0x40},
                Bytes(12),
                {0x05, size},
                config}));
}

// What becomes of one track: its metadata, or "dropped". The file claims a size of 1000 bytes a second.
std::string Offered(const Element& track, const Elements& blocks = {}) {
    Faults faults;
    faults.claimSize = true;
    faults.claimedSize = 10000;
    Document file = Movie({track}, {Cluster(0, blocks)});
    if (file.bytes.size() < 10000) file.bytes.resize(10000);
    const sp<MediaExtractor> extractor = Open(file, faults);
    return extractor->countTracks() == 0 ? "dropped" : Describe(extractor->getTrackMetaData(0, 0));
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

TEST(Discovery, AudioTracks) {
    const Element audio = Audio(44100, 2);
    const std::string values = "#chn=2 brte=8000 dura=10000000 ";
    const struct {
        const char* name;
        Element track;
        std::string metadata;
    } rows[] = {
        {"MP3", Track(1, kAudioType, "A_MPEG/L3", {audio}), values + "mime=audio/mpeg srte=44100"},
        {"defaults of Audio", Track(1, kAudioType, "A_MPEG/L2"),
         "#chn=1 brte=8000 dura=10000000 mime=audio/mpeg srte=8000"},
        {"AC-3", Track(1, kAudioType, "A_AC3", {audio}), values + "mime=audio/ac3 srte=44100"},
        {"codec private becomes an ESDS", Track(1, kAudioType, "A_DTS", {audio, Private(Hex("1210"))}),
         "#chn=2 brte=8000 dura=10000000 esds=[" + Esds(Hex("1210")) + "] mime=audio/dts srte=44100"},
        {"FLAC has a flag", Track(1, kAudioType, "A_FLAC", {audio}),
         "#chn=2 brte=8000 dura=10000000 flag=16384 mime=audio/flac srte=44100"},
        {"PCM keeps no bit depth",
         Track(1, kAudioType, "A_PCM/INT/LIT", {Audio(44100, 2, {Uint(id::kBitDepth, 24)})}),
         values + "mime=audio/raw srte=44100"},
        {"LPCM does",
         Track(1, kAudioType, "A_PCM/INT/BIG",
               {Audio(44100, 2, {Uint(id::kBitDepth, 24)}), Private(Hex("1210"))}),
         "#chn=2 bpSa=24 brte=8000 dura=10000000 mime=audio/lpcm srte=44100"},
        {"fractional and large rates", Track(1, kAudioType, "A_MPEG/L3", {Audio(11025.9, 2)}),
         values + "mime=audio/mpeg srte=11025"},
        {"a rate beyond 32 bits", Track(1, kAudioType, "A_MPEG/L3", {Audio(1e12, 2)}),
         values + "mime=audio/mpeg srte=2147483647"},
        {"AAC with codec private", Track(1, kAudioType, "A_AAC", {audio, Private(Hex("1210"))}),
         "#chn=2 brte=8000 dura=10000000 esds=[" + Esds(Hex("1210")) + "] mime=audio/mp4a-latm srte=44100"},
        {"AAC from its name", Track(1, kAudioType, "A_AAC/MPEG4/LC", {audio}),
         "#chn=2 brte=8000 dura=10000000 esds=[" + Esds(Hex("1210")) + "] mime=audio/mp4a-latm srte=44100"},
        {"AAC in lower case", Track(1, kAudioType, "a_aac/mpeg4/lc", {audio}),
         "#chn=2 brte=8000 dura=10000000 esds=[" + Esds(Hex("1210")) + "] mime=audio/mp4a-latm srte=44100"},
        {"AAC with one byte of codec private", Track(1, kAudioType, "A_AAC", {audio, Private(Hex("12"))}),
         values + "mime=audio/mp4a-latm srte=44100"},
        {"AAC without a profile", Track(1, kAudioType, "A_AAC", {audio}), "dropped"},
        {"AAC at an odd rate", Track(1, kAudioType, "A_AAC/MPEG4/LC", {Audio(7350, 2)}), "dropped"},
        {"AAC of an unsupported profile", Track(1, kAudioType, "A_AAC/MPEG4/MAIN", {audio}), "dropped"},
        {"Vorbis", Track(1, kAudioType, "A_VORBIS", {audio, Private(VorbisPrivate())}),
         "#chn=2 brte=8000 dura=10000000 mime=audio/vorbis srte=44100 vboo=[05a5a5a5a5] vinf=[01" +
             ToHex(Bytes(29, 0xA1)) + "]"},
        {"wave format",
         Track(1, kAudioType, "A_MS/ACM",
               {audio, Private(Hex("5500 0200 44AC0000 803E0000 0100 1000 0000"))}),
         "#chn=2 brte=128000 dura=10000000 esds=[" + Esds(Hex("5500 0200 44AC0000 803E0000 0100 1000 0000")) +
             "] mime=audio/mpeg srte=44100"},
        {"an unknown wave format",
         Track(1, kAudioType, "A_MS/ACM",
               {audio, Private(Hex("9999 0200 44AC0000 803E0000 0100 1000 0000"))}),
         "dropped"},
        {"unknown codec", Track(1, kAudioType, "A_OPUS", {audio}), "dropped"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.metadata, Offered(row.track));
    }
}

TEST(Discovery, VideoTracks) {
    const Element video = Video(64, 48);
    const std::string avcc = "0142001effe10007";
    const Bytes m4v = Hex("000001B0 01 000001B5 09 000001B6 10 AABB");
    const struct {
        const char* name;
        Element track;
        Elements blocks;
        std::string metadata;
    } rows[] = {
        {"AVC", AvcTrack(), {}, "avcc=[" + avcc + "] brte=8000 dura=10000000 heig=48 mime=video/avc widt=64"},
        {"HEVC",
         Track(1, kVideoType, "V_MPEGH/ISO/HEVC", {video, Private(Hex("010203040506"))}),
         {},
         "brte=8000 dura=10000000 heig=48 hvcc=[010203040506] mime=video/hevc widt=64"},
        {"VP9",
         Track(1, kVideoType, "V_VP9", {video}),
         {},
         "brte=8000 dura=10000000 heig=48 mime=video/x-vnd.on2.vp9 widt=64"},
        {"VP8 has a tag that nobody knows", Track(1, kVideoType, "V_VP8", {video}), {}, "dropped"},
        {"MPEG-2: a bitmap header in front",
         Track(1, kVideoType, "V_MPEG2", {video, Private(Hex("AABB"))}),
         {},
         "brte=8000 dura=10000000 esds=[" +
             Esds(Hex("28000000 40000000 30000000 0000 0000 4D504732" + std::string(40, '0') + "AABB")) +
             "] heig=48 mime=video/mpeg2 widt=64"},
        {"RealVideo",
         Track(1, kVideoType, "V_REAL/RV40", {video}),
         {},
         "brte=8000 dura=10000000 esds=[" +
             Esds(Hex("28000000 40000000 30000000 0000 0000 52563430" + std::string(40, '0'))) +
             "] heig=48 mime=video/mixer widt=64"},
        {"MPEG-4 with its configuration",
         Track(1, kVideoType, "V_MPEG4/ISO/ASP", {video, Private(Hex("1210"))}),
         {},
         "brte=8000 dura=10000000 esds=[" + Esds(Hex("1210")) + "] heig=48 mime=video/mp4v-es widt=64"},
        {"MPEG-4 in a bitmap header: configuration from the first frame",
         Track(1, kVideoType, "V_MS/VFW/FOURCC", {video, Private(BitmapHeader("XVID"))}),
         {SimpleBlock(1, 0, kKeyFrame, m4v)},
         "brte=8000 dura=10000000 esds=[" + Esds(Hex("000001B001000001B509")) +
             "] heig=48 mime=video/mp4v-es widt=64"},
        {"MPEG-4 without anything",
         Track(1, kVideoType, "V_MPEG4/ISO/ASP", {video}),
         {SimpleBlock(1, 0, kKeyFrame, m4v)},
         "brte=8000 dura=10000000 heig=48 mime=video/mp4v-es widt=64"},
        {"a short bitmap header",
         Track(1, kVideoType, "V_MS/VFW/FOURCC", {video, Private(ShortBitmapHeader())}),
         {},
         "dropped"},
        {"an unknown compression",
         Track(1, kVideoType, "V_MS/VFW/FOURCC", {video, Private(BitmapHeader("ZZZZ"))}),
         {},
         "dropped"},
        {"lower-case compression",
         Track(1, kVideoType, "V_MS/VFW/FOURCC", {video, Private(BitmapHeader("flv1"))}),
         {},
         "brte=8000 dura=10000000 esds=[" +
             Esds(Concat({Hex("28000000 40000000 30000000 0000 0000"), Text("flv1"), Bytes(20),
                          BitmapHeader("flv1")})) +
             "] heig=48 mime=video/mixer widt=64"},
        {"AVC in a bitmap header, parameter sets in the stream",
         Track(1, kVideoType, "V_MS/VFW/FOURCC", {video, Private(BitmapHeader("H264"))}),
         {SimpleBlock(1, 0, kKeyFrame, Hex("00000001 6742001EDA11E4 00000001 68CE3880 00000001 6588"))},
         "avcc=[0142001efde100076742001eda11e401000468ce3880] brte=8000 dura=10000000 heig=48 mime=video/avc "
         "widt=64"},
        {"AVC in a bitmap header, no parameter sets",
         Track(1, kVideoType, "V_MS/VFW/FOURCC", {video, Private(BitmapHeader("H264"))}),
         {SimpleBlock(1, 0, kKeyFrame, Hex("00000001 6588"))},
         "dropped"},
        {"no Video element",
         Track(1, kVideoType, "V_VP9"),
         {},
         "brte=8000 dura=10000000 heig=0 mime=video/x-vnd.on2.vp9 widt=0"},
        {"unknown codec", Track(1, kVideoType, "V_THEORA", {video}), {}, "dropped"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.metadata, Offered(row.track, row.blocks));
    }
}

TEST(Discovery, SubtitleTracks) {
    const struct {
        const char* codecId;
        const char* metadata;
    } rows[] = {
        {"S_TEXT/UTF8", "dura=10000000 lang= mime=text/utf-8"},
        {"S_TEXT/ASS", "dura=10000000 lang= mime=text/ass"},
        {"S_TEXT/SSA", "dura=10000000 lang= mime=text/ass"},
        {"S_TEXT/ASS2", "dura=10000000 lang= mime=text/ass2"},
        {"S_VOBSUB", "dropped"},
        {"S_KATE", "dropped"},
        {"S_IMAGE/BMP", "dropped"},
        {"S_TEXT/USF", "dropped"},
        {"S_HDMV/PGS", "dropped"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.codecId);
        EXPECT_EQ(row.metadata, Offered(TextTrack(1, row.codecId)));
    }
    EXPECT_EQ("dura=10000000 lang=Forced mime=text/utf-8",
              Offered(Track(1, kSubtitleType, "S_TEXT/UTF8",
                            {Str(id::kName, "Forced!"), Str(id::kLanguage, "eng")})));
}

TEST(Discovery, OtherTypesAreNotOffered) {
    for (uint64_t type : {0ull, 3ull, 0x10ull, 0x12ull, 0x20ull, (1ull << 32) + 1, (1ull << 32) + 2}) {
        SCOPED_TRACE(type);
        EXPECT_EQ("dropped", Offered(Track(1, type, "A_MPEG/L3", {Audio(44100, 2)})));
    }
}

TEST(Discovery, LanguageRule) {
    const struct {
        const char* name;
        Elements elements;
        const char* language;  // null: not set
    } rows[] = {
        {"neither", {}, nullptr},
        {"Name without its last byte", {Str(id::kName, "Commentary")}, "Commentar"},
        {"Name wins", {Str(id::kName, "Director"), Str(id::kLanguage, "chi")}, "Directo"},
        {"Name of one byte", {Str(id::kName, "A")}, ""},
        {"Name with a zero byte", {Str(id::kName, std::string("ab\0cd", 5))}, "a"},
        {"eng", {Str(id::kLanguage, "eng")}, "英文"},
        {"en", {Str(id::kLanguage, "en")}, "e"},
        {"en-", {Str(id::kLanguage, "en-")}, "英文"},
        {"chi", {Str(id::kLanguage, "chi")}, "简体中文"},
        {"che", {Str(id::kLanguage, "che")}, "简体中文"},
        {"capitals", {Str(id::kLanguage, "ENG")}, "EN"},
        {"ger", {Str(id::kLanguage, "ger")}, "ge"},
        {"one letter", {Str(id::kLanguage, "x")}, ""},
        {"empty Language", {Str(id::kLanguage, "")}, nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const sp<MediaExtractor> extractor =
            Open(Movie({Track(1, kVideoType, "V_VP9", row.elements)}, {Cluster(0, {})}));
        const char* language = nullptr;
        extractor->getTrackMetaData(0, 0)->findCString(android::kKeyMediaLanguage, &language);
        EXPECT_STREQ(row.language, language);
    }
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
