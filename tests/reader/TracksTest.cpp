// What is derived from the tracks (facts per codec, look-up, master track) and from the chapters.
#include "reader/ReaderFixture.h"

namespace testing_support {
namespace {

uint32_t Tag(const std::string& text) {
    if (text.size() != 4 || text[0] == '0') return static_cast<uint32_t>(std::stoul(text, nullptr, 0));
    uint32_t tag = 0;
    for (size_t i = 4; i-- > 0;) tag = tag << 8 | static_cast<uint8_t>(text[i]);
    return tag;
}

struct FactsRow {
    uint64_t type;
    const char* codecId;
    size_t privateSize;
    const char* fourCC;  // four characters, or a number
    uint32_t bitCount;
    bool isRealMedia, isVorbis;
    int32_t subtitleType;
};

// CodecPrivate of the given size: byte i is i + 1.
Bytes CountingPrivate(size_t size) {
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i + 1);
    return bytes;
}

TEST(Tracks, FactsOfEveryCodecId) {
    const FactsRow rows[] = {
        // TrackType, CodecID, bytes of CodecPrivate, ...
        {2, "A_MPEG/L3", 0, "0x55", 16, false, false, 0},
        {2, "A_MPEG/L2", 0, "0x50", 16, false, false, 0},
        {2, "A_MPEG/L1", 0, "0", 16, false, false, 0},
        {2, "A_AC3/BSID9", 0, "0x2000", 16, false, false, 0},
        {2, "A_EAC3", 0, "0", 16, false, false, 0},
        {2, "A_DTS/EXPRESS", 0, "0x2001", 16, false, false, 0},
        {2, "A_PCM/INT/LIT", 0, "1", 16, false, false, 0},
        {2, "A_PCM/INT/BIG", 0, "0xA0", 16, false, false, 0},
        {2, "A_PCM/FLOAT/IEEE", 0, "0", 16, false, false, 0},
        {2, "A_AAC/MPEG2/LC", 2, "0xFF", 16, false, false, 0},
        {2, "a_aac/mpeg4/lc", 0, "0xFF", 16, false, false, 0},
        {2, "a_mpeg/l3", 0, "0", 16, false, false, 0},
        {2, "A_MS/ACM", 18, "0x0201", 0x100F, false, false, 0},
        {2, "A_MS/ACM", 17, "0", 16, false, false, 0},
        {2, "A_REAL/COOK", 0, "COOK", 16, true, false, 0},
        {2, "A_REAL/COOKED", 0, "COOK", 16, true, false, 0},
        {2, "A_REAL/COO", 0, "0", 16, false, false, 0},
        {2, "A_FLAC", 0, "0x5000", 16, false, false, 0},
        {2, "xA_FLACx", 0, "0x5000", 16, false, false, 0},
        {2, "A_VORBIS", 0, "0x5001", 16, false, true, 0},
        {2, "V_VP8", 0, "0", 16, false, false, 0},
        {1, "V_MS/VFW/FOURCC", 40, "0x14131211", 0x100F, false, false, 0},
        {1, "V_MS/VFW/FOURCC", 39, "0", 0, false, false, 0},
        {1, "V_MS/VFW/FOURCC2", 40, "0", 0, false, false, 0},
        {1, "V_MPEG4/ISO/AVC", 6, "AVC1", 24, false, false, 0},
        {1, "V_MPEG4/ISO/AVC", 5, "MP4V", 24, false, false, 0},
        {1, "V_MPEGH/ISO/HEVC", 6, "HEVC", 24, false, false, 0},
        {1, "V_MPEGH/ISO/HEVC", 5, "0", 0, false, false, 0},
        {1, "V_MPEG4/ISO/ASP", 0, "MP4V", 24, false, false, 0},
        {1, "V_REAL/RV40", 0, "RV40", 24, true, false, 0},
        {1, "V_REAL/RV", 0, "0", 0, false, false, 0},
        {1, "V_VP8", 0, "VPXV", 24, false, false, 0},
        {1, "V_VP9", 0, "VP-9", 24, false, false, 0},
        {1, "V_MPEG1", 0, "MPG1", 24, false, false, 0},
        {1, "V_MPEG2", 0, "MPG2", 24, false, false, 0},
        {1, "V_THEORA", 0, "0", 0, false, false, 0},
        {17, "S_TEXT/UTF8", 0, "0", 0, false, false, 1},
        {17, "S_TEXT/ASS2", 0, "0", 0, false, false, 3},
        {17, "S_TEXT/ASS", 0, "0", 0, false, false, 2},
        {17, "S_TEXT/SSA", 0, "0", 0, false, false, 2},
        {17, "S_VOBSUB", 0, "0", 0, false, false, 4},
        {17, "S_KATE", 0, "0", 0, false, false, 5},
        {17, "S_IMAGE/BMP", 0, "0", 0, false, false, 6},
        {17, "S_TEXT/USF", 0, "0", 0, false, false, 7},
        {17, "S_HDMV/PGS", 0, "0", 0, false, false, 0},
        {3, "A_AAC", 0, "0", 0, false, false, 0},
    };
    for (const FactsRow& row : rows) {
        SCOPED_TRACE(std::string(row.codecId) + " type " + std::to_string(row.type) + " private " +
                     std::to_string(row.privateSize));
        Elements others = {Audio(48000, 2, {Uint(id::kBitDepth, 16)})};
        if (row.privateSize > 0) others.push_back(Bin(id::kCodecPrivate, CountingPrivate(row.privateSize)));
        InitialisedFile open(
            Write({EbmlHeader(),
                   Segment({Info(1), Master(id::kTracks, {Track(1, row.type, row.codecId, others)})})}));
        const reader::TrackEntry& track = *open.file.FindTrack(1);
        EXPECT_EQ(Tag(row.fourCC), track.FourCC);
        EXPECT_EQ(row.bitCount, track.BitCount);
        EXPECT_EQ(row.isRealMedia, track.IsRealMedia);
        EXPECT_EQ(row.isVorbis, track.IsVorbis);
        EXPECT_EQ(row.subtitleType, track.SubtitleType);
        const bool hasWaveFormat = std::string(row.codecId) == "A_MS/ACM" && row.privateSize == 18;
        EXPECT_EQ(hasWaveFormat ? 0x0C0B0A09u : 0u, track.AvgBytesPerSec);
    }
}

TEST(Tracks, FactsOfTheEncodings) {
    const struct {
        const char* name;
        Elements encodings;
        bool isZlib;
        uint32_t strippedBytes;
    } rows[] = {
        {"zlib", {Encoding(0, 0, 0)}, true, 0},
        {"all defaults: zlib", {Master(id::kContentEncoding, {Uint(id::kContentEncodingOrder, 0)})}, true, 0},
        {"stripped", {Encoding(0, 0, 3, Hex("AABB"))}, false, 2},
        {"stripped twice", {Encoding(0, 0, 3, Hex("AABB")), Encoding(1, 0, 3, Hex("CC"))}, false, 3},
        {"encrypted, though it names zlib", {Encoding(0, 1, 0)}, false, 0},
        {"encrypted, though it names stripping", {Encoding(0, 1, 3, Hex("AA"))}, false, 0},
        {"bzlib", {Encoding(0, 0, 1)}, false, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        InitialisedFile open(Write(
            {EbmlHeader(),
             Segment({Master(id::kTracks,
                             {Track(1, 1, "V_MPEG2", {Master(id::kContentEncodings, row.encodings)})})})}));
        EXPECT_EQ(row.isZlib, open.file.FindTrack(1)->IsZlibCompressed);
        EXPECT_EQ(row.strippedBytes, open.file.FindTrack(1)->StrippedHeaderBytes);
    }
}

Element Numbered(uint64_t number, uint64_t type, uint64_t uid = 0) {
    return Master(id::kTrackEntry,
                  {Uint(id::kTrackNumber, number), Uint(id::kTrackType, type), Uint(id::kTrackUid, uid)});
}

TEST(Tracks, TheLastTracksElementWithANumberAnswers) {
    InitialisedFile open(Write(
        {EbmlHeader(),
         Segment({Info(1), Master(id::kTracks, {Numbered(1, 2, 11), Numbered(1, 2, 12), Numbered(2, 2, 13)}),
                  Master(id::kTracks, {Numbered(1, 2, 21), Numbered(1, 2, 22),
                                       Numbered((1ull << 32) + 2, 2, 23), Numbered(0, 2, 24)})})}));
    EXPECT_EQ(7u, open.file.GetTrackCnt());
    EXPECT_EQ(21u, open.file.FindTrack(1)->TrackUID.Get());
    EXPECT_EQ(13u, open.file.FindTrack(2)->TrackUID.Get());  // a number above 32 bits is nobody's
    EXPECT_EQ(24u, open.file.FindTrack(0)->TrackUID.Get());
    EXPECT_EQ(nullptr, open.file.FindTrack(3));
}

TEST(Tracks, MasterTrack) {
    const struct {
        const char* name;
        std::vector<std::vector<std::pair<uint64_t, uint64_t>>>
            tracks;  // number and type, per Tracks element
        uint32_t master;
    } rows[] = {
        {"video beats audio", {{{1, 2}, {2, 1}}}, 2},
        {"first video", {{{4, 1}, {3, 1}}}, 4},
        {"first audio without video", {{{5, 17}, {7, 2}, {6, 2}}}, 7},
        {"audio without a number does not count", {{{0, 2}, {9, 2}}}, 9},
        {"subtitle only", {{{8, 17}}}, 1},
        {"nothing", {}, 1},
        {"a video without a number ends its element", {{{0, 1}, {5, 1}, {6, 2}}}, 1},
        {"and the next element is asked", {{{3, 2}, {0, 1}}, {{5, 1}}}, 5},
        {"an audio before it is remembered", {{{3, 2}, {0, 1}}, {{5, 17}}}, 3},
        {"video in a later element beats audio in the first", {{{1, 2}}, {{2, 1}}}, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Elements children = {Info(1)};
        for (const auto& tracks : row.tracks) {
            Elements entries;
            for (const auto& track : tracks) entries.push_back(Numbered(track.first, track.second));
            children.push_back(Master(id::kTracks, entries));
        }
        InitialisedFile open(Write({EbmlHeader(), Segment(children)}));
        EXPECT_EQ(row.master, open.file.MasterTrack());
        EXPECT_EQ(row.master, open.Model().GetMasterTrack());
    }
}

// --- Chapters ---

Element Atom(uint64_t uid, Elements nested = {}) {
    nested.insert(nested.begin(), Uint(id::kChapterUid, uid));
    return Master(id::kChapterAtom, nested);
}

// Chapters of a Segment that is parsed whole (opening loads one Chapters element at most).
struct ChaptersFile : OpenFile {
    explicit ChaptersFile(Elements chapters) : OpenFile(Write({Segment(std::move(chapters))}).bytes) {
        EXPECT_EQ(reader::kOk, Model().Parse(SegmentNode().get()));
    }
    uint64_t Find(uint64_t uid, int edition) {
        const reader::ChapterAtom* atom = Model().FindChapterAtom(uid, edition);
        return atom == nullptr ? 0 : atom->ChapterUID.Get();
    }
};

TEST(Chapters, AtomsAreFoundInTheirEditionDepthFirst) {
    ChaptersFile open(
        {Master(id::kChapters, {Master(id::kEditionEntry, {Atom(1, {Atom(2, {Atom(3)}), Atom(4)}), Atom(5)}),
                                Master(id::kEditionEntry, {Atom(6)})}),
         Master(id::kChapters, {Master(id::kEditionEntry, {Atom(7)})})});
    ASSERT_EQ(2u, open.Model().Chapters.size());
    const struct {
        uint64_t uid;
        int edition;
        bool found;
    } rows[] = {{1, 0, true}, {3, 0, true}, {4, 0, true},  {5, 0, true},   {6, 0, false},
                {6, 1, true}, {7, 2, true}, {7, 3, false}, {1, -1, false}, {99, 0, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.uid) + " in " + std::to_string(row.edition));
        EXPECT_EQ(row.found ? row.uid : 0, open.Find(row.uid, row.edition));
    }
    EXPECT_EQ(open.Model().Chapters[1]->Editions[0].get(), open.Model().FindChapterAtom(0, 2));
    EXPECT_EQ(nullptr, open.Model().FindChapterAtom(0, 3));
}

TEST(Chapters, ValuesAndDefaults) {
    ChaptersFile open({Master(
        id::kChapters,
        {Master(id::kEditionEntry, {Atom(1, {Uint(id::kChapterTimeStart, 5), Uint(id::kChapterTimeEnd, 9),
                                             Uint(id::kChapterFlagHidden, 1),
                                             Master(id::kChapterDisplay, {Str(id::kChapString, "Anfang"),
                                                                          Str(id::kChapLanguage, "ger"),
                                                                          Str(id::kChapCountry, "de")})}),
                                    Atom(2)})})});
    const reader::ChapterAtom& first = *open.Model().FindChapterAtom(1, 0);
    EXPECT_EQ(5u, first.ChapterTimeStart.Get());
    EXPECT_EQ(9u, first.ChapterTimeEnd.Get());
    EXPECT_EQ(1u, first.ChapterFlagHidden.Get());
    ASSERT_EQ(1u, first.Displays.size());
    EXPECT_STREQ("Anfang", first.Displays[0]->ChapString.c_str());
    EXPECT_STREQ("ger", first.Displays[0]->ChapLanguage.c_str());
    const reader::ChapterAtom& second = *open.Model().FindChapterAtom(2, 0);
    EXPECT_EQ(0u, second.ChapterFlagHidden.Get());
    EXPECT_EQ(1u, second.ChapterFlagEnabled.Get());
    EXPECT_TRUE(second.ChapterFlagEnabled.IsSet());
}

TEST(Chapters, AtomsNestedDeeperThan64AreDropped) {
    Element chain = Atom(100);
    for (uint64_t uid = 99; uid >= 1; --uid) chain = Atom(uid, {chain});
    ChaptersFile open({Master(id::kChapters, {Master(id::kEditionEntry, {chain})})});
    EXPECT_EQ(64u, open.Find(64, 0));
    EXPECT_EQ(0u, open.Find(65, 0));
    EXPECT_EQ(0u, open.Find(100, 0));
}

}  // namespace
}  // namespace testing_support
