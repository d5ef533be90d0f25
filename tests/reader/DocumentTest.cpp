// Opening a document: which headers are accepted, how much of the Segment is read, defaults.
#include "reader/ReaderFixture.h"

#include <cmath>

namespace testing_support {
namespace {

using reader::kFailure;
using reader::kOk;

Element Tracks(uint64_t number = 1) {
    return Master(id::kTracks, {Track(number, 2, "A_AAC")});
}
Element Cues(const std::string& cluster) {
    return Master(id::kCues, {CuePoint(0, 1, cluster)});
}
Element Chapters(uint64_t uid = 5) {
    return Master(id::kChapters,
                  {Master(id::kEditionEntry, {Master(id::kChapterAtom, {Uint(id::kChapterUid, uid)})})});
}
Element Attachments() {
    return Master(id::kAttachments,
                  {Master(id::kAttachedFile, {Str(id::kFileName, "f"), Uint(id::kFileUid, 9),
                                              Bin(id::kFileData, Bytes(50)).Label("file data")})});
}
Element FirstCluster() {
    return Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Bytes(100))}).Label("cluster");
}

TEST(Document, DocTypeAndReadVersionDecide) {
    const struct {
        const char* name;
        std::string docType;
        uint64_t readVersion;
        bool opens;
    } rows[] = {
        {"matroska", "matroska", 2, true},
        {"webm", "webm", 2, true},
        {"read version 0", "webm", 0, true},
        {"read version 3", "matroska", 3, false},
        {"read version 2^32", "matroska", 0x100000000, false},
        {"capital letter", "Matroska", 2, false},
        {"longer", "matroska2", 2, false},
        {"shorter", "web", 2, false},
        {"empty", "", 2, false},
        {"zero byte behind the name", std::string("webm\0x", 6), 2, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        OpenFile open(Write({EbmlHeader(row.docType, row.readVersion), Segment({Info(1), Tracks()})}).bytes);
        EXPECT_EQ(row.opens ? kOk : kFailure, open.file.Init());
        EXPECT_EQ(row.opens ? 1u : 0u, open.file.GetTrackCnt());
        EXPECT_STREQ(row.docType.c_str(), open.file.Header.DocType.c_str());
    }
}

TEST(Document, HeadersThatAreMissing) {
    OpenFile withoutDocType(
        Write({Master(id::kEbml, {Uint(id::kEbmlVersion, 1)}), Segment({Tracks()})}).bytes);
    EXPECT_EQ(kFailure, withoutDocType.file.Init());
    OpenFile withoutHeader(Write({Segment({Tracks()})}).bytes);
    EXPECT_EQ(kOk, withoutHeader.file.Init());
    EXPECT_EQ(1u, withoutHeader.file.GetTrackCnt());
    OpenFile withoutSegment(Write({EbmlHeader()}).bytes);
    EXPECT_EQ(kFailure, withoutSegment.file.Init());
    OpenFile nothing({});
    EXPECT_EQ(kFailure, nothing.file.Init());
    EXPECT_EQ(reader::kNullNode, nothing.file.Parse(nullptr));
    EXPECT_EQ(reader::kNullNode, nothing.Model().Parse(nullptr));
    EXPECT_EQ(reader::kNullNode, nothing.Model().ParseMinimal(nullptr));
}

TEST(Document, ASegmentUidShutsOutLaterSegments) {
    const auto uid = Master(id::kInfo, {Bin(id::kSegmentUid, Hex("0102"))});
    const struct {
        const char* name;
        Element firstInfo;
        uint32_t tracks;
    } rows[] = {{"with a UID", uid, 1}, {"without", Info(1), 2}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        OpenFile open(
            Write({EbmlHeader(), Segment({row.firstInfo, Tracks(1)}), Segment({Info(1), Tracks(2)})}).bytes);
        EXPECT_EQ(kOk, open.file.Init());
        EXPECT_EQ(row.tracks, open.file.GetTrackCnt());
    }
}

// What one opening loaded, for the table below.
std::string Loaded(OpenFile& open) {
    const auto& segment = open.Model();
    std::string text = "tracks " + std::to_string(open.file.GetTrackCnt());
    text += " seekheads " + std::to_string(segment.SeekHeads.size());
    text += " cues " + std::to_string(segment.Cues.size());
    text += " chapters " + std::to_string(segment.Chapters.size());
    text += " attachments " + std::to_string(segment.Attachments.size());
    return text;
}

bool IsTouchedBehindItsHead(const OpenFile& open, const Document& file, const char* label) {
    return open.source->Touched(file.HeaderOf(label) + reader::Pieces::kHead, file.EndOf(label));
}

TEST(Document, HowMuchOfTheSegmentIsRead) {
    const Element head =
        SeekHead({{id::kCues, "cues"}, {id::kChapters, "chapters"}, {id::kAttachments, "files"}});
    const Elements tail = {Cues("cluster").Label("cues"), Chapters().Label("chapters"),
                           Attachments().Label("files")};
    auto with = [&](Elements front) {
        front.push_back(FirstCluster());
        front.insert(front.end(), tail.begin(), tail.end());
        return front;
    };
    const struct {
        const char* name;
        Elements children;
        const char* loaded;
    } rows[] = {
        {"three up front: the rest by seeking", with({head, Info(1), Tracks()}),
         "tracks 1 seekheads 1 cues 1 chapters 1 attachments 1"},
        {"any order, a Void between", with({Tracks(), Bin(id::kVoid, Bytes(9)), Info(1), head}),
         "tracks 1 seekheads 1 cues 1 chapters 1 attachments 1"},
        {"two up front: walked to the end", with({Info(1), Tracks()}),
         "tracks 1 seekheads 0 cues 1 chapters 0 attachments 0"},
        {"Cues up front are not counted, and not read twice",
         with({Cues("cluster").Label("first cues"), head, Info(1), Tracks()}),
         "tracks 1 seekheads 1 cues 1 chapters 1 attachments 1"},
        {"Tracks behind two SeekHeads and an Info",
         with({head, SeekHead({{id::kTags, "cues"}}), Info(1), Tracks()}),
         "tracks 1 seekheads 2 cues 1 chapters 1 attachments 1"},
        {"Tracks behind the Cluster",
         {head, SeekHead({{id::kTags, "cues"}}), Info(1), FirstCluster(), Tracks(), tail[0], tail[1],
          tail[2]},
         "tracks 1 seekheads 2 cues 1 chapters 1 attachments 1"},
        {"no Tracks at all", with({head, Info(1)}), "tracks 0 seekheads 1 cues 1 chapters 0 attachments 0"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Document file = Write({EbmlHeader(), Segment(row.children)});
        Faults faults;
        faults.recordCalls = true;
        OpenFile open(file.bytes, faults);
        EXPECT_EQ(kOk, open.file.Init());
        EXPECT_EQ(row.loaded, Loaded(open));
        EXPECT_FALSE(IsTouchedBehindItsHead(open, file, "cluster"));
        EXPECT_FALSE(IsTouchedBehindItsHead(open, file, "file data"));
    }
}

TEST(Document, TheHeadEndsAtAClusterThatIsNotPassed) {
    const Element unsized = FirstCluster().UnknownSize(), cues = Cues("cluster").Label("cues");
    const struct {
        const char* name;
        Elements children;
        bool cachesNetwork;
        const char* loaded;
    } rows[] = {
        {"of unknown size", {Info(1), Tracks(), unsized, cues}, false, "tracks 1 seekheads 0 cues 0"},
        {"of unknown size, in front of all",
         {unsized, Info(1), Tracks()},
         false,
         "tracks 0 seekheads 0 cues 0"},
        {"over a network", {Info(1), Tracks(), FirstCluster(), cues}, true, "tracks 1 seekheads 0 cues 0"},
        {"over a network, Tracks behind it",
         {Info(1), FirstCluster(), Tracks(), Cluster(1, {}), cues},
         true,
         "tracks 1 seekheads 0 cues 0"},
        {"over a network, listed",
         {SeekHead({{id::kCues, "cues"}}), Info(1), Tracks(), FirstCluster(), cues},
         true,
         "tracks 1 seekheads 1 cues 1"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Document file = Write({EbmlHeader(), Segment(row.children)});
        Faults faults;
        faults.recordCalls = true;
        if (row.cachesNetwork) faults.flags = android::DataSource::kIsCachingDataSource;
        OpenFile open(file.bytes, faults);
        EXPECT_EQ(kOk, open.file.Init());
        EXPECT_EQ(std::string(row.loaded) + " chapters 0 attachments 0", Loaded(open));
        EXPECT_FALSE(IsTouchedBehindItsHead(open, file, "cluster"));
    }
}

TEST(Document, EveryListedCuesElementIsReadOnceInTheOrderListed) {
    auto cuesAt = [](uint64_t time) { return Master(id::kCues, {CuePoint(time, 1, "cluster")}); };
    const Document file =
        Write({EbmlHeader(), Segment({SeekHead({{id::kCues, "far"},
                                                {id::kCues, "cluster"},
                                                {id::kCues, "near"},
                                                {id::kCues, "next"},
                                                {id::kCues, "near"}}),
                                      Info(1), Tracks(), cuesAt(1).Label("near"), Bin(id::kVoid, Bytes(3)),
                                      cuesAt(2).Label("next"), FirstCluster(), cuesAt(3).Label("far"),
                                      Cluster(1, {}), cuesAt(4)})});
    InitialisedFile open(file);
    std::string times;
    for (const auto& cue : open.Model().Cues) times += std::to_string(cue->Points[0].CueTime) + " ";
    EXPECT_EQ("3 1 2 ", times);
}

TEST(Document, ASeekHeadBehindTheClustersIsFollowed) {
    const Document file =
        Write({EbmlHeader(),
               Segment({SeekHead({{id::kSeekHead, "second"}}), Info(1), Tracks(), FirstCluster(),
                        Cues("cluster").Label("cues"), SeekHead({{id::kSeekHead, "third"}}).Label("second"),
                        SeekHead({{id::kCues, "cues"}, {id::kChapters, "chapters"}}).Label("third"),
                        Chapters().Label("chapters")})});
    InitialisedFile open(file);
    EXPECT_EQ("tracks 1 seekheads 3 cues 1 chapters 1 attachments 0", Loaded(open));

    // In the last Cluster that is passed, from behind its header on.
    const Element last = Master(
        id::kCluster, {SeekHead({{id::kTags, "last"}}).Label("second"), Uint(id::kClusterTimecode, 0)});
    InitialisedFile within(Write(
        {EbmlHeader(), Segment({SeekHead({{id::kSeekHead, "second"}}), Tracks(), last.Label("last")})}));
    EXPECT_EQ(2u, within.Model().SeekHeads.size());

    Elements chain = {Info(1), Tracks()};
    for (uint32_t i = 0; i <= reader::limit::kFollowedSeekHeads + 1; ++i) {
        const Element head = SeekHead({{id::kSeekHead, std::to_string(i + 1)}}).Label(std::to_string(i));
        chain.insert(i == 0 ? chain.begin() : chain.end(), head);
        if (i == 0) chain.push_back(Cluster(0, {}));
    }
    chain.push_back(Master(id::kTags, {}).Label(std::to_string(reader::limit::kFollowedSeekHeads + 2)));
    InitialisedFile longer(Write({EbmlHeader(), Segment(chain)}));
    EXPECT_EQ(1 + reader::limit::kFollowedSeekHeads, longer.Model().SeekHeads.size());
    EXPECT_EQ(1u, longer.file.Losses.Count(reader::LossKind::kLimit));
}

// A master takes its own children only, whatever a Void in it looks like from inside.
TEST(Document, FillersAreNoEntries) {
    const Bytes seek = Write({Uint(id::kSeekPosition, 1)}).bytes;
    const Bytes edition = Write({Master(id::kChapterAtom, {Uint(id::kChapterUid, 1)})}).bytes;
    InitialisedFile open(Write(
        {EbmlHeader(),
         Segment({Master(id::kSeekHead, {Bin(id::kVoid, seek), Bin(id::kCrc32, Bytes(4)),
                                         Master(id::kSeek, {IdValue(id::kSeekId, id::kChapters),
                                                            PositionOf(id::kSeekPosition, "chapters")})}),
                  Info(1), Tracks(),
                  Master(id::kChapters, {Bin(id::kVoid, edition), Master(id::kEditionEntry, {Raw(edition)})})
                      .Label("chapters")})}));
    ASSERT_EQ(1u, open.Model().SeekHeads.size());
    EXPECT_EQ(1u, open.Model().SeekHeads[0]->Entries.size());
    ASSERT_EQ(1u, open.Model().Chapters.size());
    EXPECT_EQ(1u, open.Model().Chapters[0]->Editions.size());
}

TEST(Document, EveryCuesElementIsReadButOneOfChapters) {
    const Document file =
        Write({EbmlHeader(),
               Segment({SeekHead({{id::kCues, "cues"}, {id::kChapters, "chapters"}}), Info(1), Tracks(),
                        FirstCluster(), Cues("cluster").Label("cues"), Bin(id::kVoid, Bytes(3)),
                        Cues("cluster"), Chapters().Label("chapters"), Chapters()})});
    InitialisedFile open(file);
    EXPECT_EQ("tracks 1 seekheads 1 cues 2 chapters 1 attachments 0", Loaded(open));
}

TEST(Document, ACuePositionNamesItsReferences) {
    const auto referring = [](uint64_t time) {
        return Master(id::kCueTrackPositions, {Master(id::kCueReference, {Uint(id::kCueRefTime, time)})});
    };
    InitialisedFile open(Write(
        {EbmlHeader(), Segment({Info(1), Tracks(),
                                Master(id::kCues, {Master(id::kCuePoint, {Uint(id::kCueTime, 3), referring(5),
                                                                          referring(6)})})})}));
    const reader::Cue& cue = *open.Model().Cues[0];
    ASSERT_EQ(2u, cue.References.size());
    EXPECT_EQ(1u, cue.References[1].Position);
    EXPECT_EQ(6u, cue.References[1].CueRefTime);
}

TEST(Document, CuesKeepEveryNumberAndNoEmptyPoint) {
    const Element reference =
        Master(id::kCueReference, {Uint(id::kCueRefTime, 1), Uint(id::kCueRefCluster, 2),
                                   Uint(id::kCueRefNumber, 4), Uint(id::kCueRefCodecState, 6)});
    const Element positions =
        Master(id::kCueTrackPositions,
               {Uint(id::kCueTrack, 8), Uint(id::kCueClusterPosition, 9), Uint(id::kCueBlockNumber, 7),
                Uint(id::kCueCodecState, 5), reference, Master(id::kCueReference, {})});
    InitialisedFile open(
        Write({EbmlHeader(),
               Segment({Info(1), Tracks(),
                        Master(id::kCues, {Master(id::kCuePoint, {}),
                                           Master(id::kCuePoint, {Uint(id::kCueTime, 3), positions,
                                                                  Master(id::kCueTrackPositions, {})})})})}));
    ASSERT_EQ(1u, open.Model().Cues.size());
    const reader::Cue& cue = *open.Model().Cues[0];
    ASSERT_EQ(1u, cue.Points.size());
    ASSERT_EQ(1u, cue.Positions.size());
    ASSERT_EQ(1u, cue.Blocks.size());
    ASSERT_EQ(1u, cue.References.size());
    const reader::CueTrackPosition& position = *cue.PositionsOf(cue.Points[0]);
    const reader::CueReference& kept = cue.References[0];
    const std::vector<uint64_t> numbers = {
        cue.Points[0].CueTime,        position.CueTrack,           position.CueClusterPosition,
        cue.Blocks[0].CueBlockNumber, cue.Blocks[0].CueCodecState, kept.CueRefTime,
        kept.CueRefCluster,           kept.CueRefNumber,           kept.CueRefCodecState};
    EXPECT_EQ((std::vector<uint64_t>{3, 8, 9, 7, 5, 1, 2, 4, 6}), numbers);
}

TEST(Document, ABadMemberDoesNotFailItsParent) {
    InitialisedFile open(
        Write({EbmlHeader(),
               Segment({Master(id::kInfo, {Bin(id::kDuration, Hex("010203")), Uint(id::kTimecodeScale, 500)}),
                        Master(id::kTracks, {Track(1, 2, "A_AAC", {Master(id::kAudio, {})}),
                                             Master(id::kTrackEntry, {}),  // dropped: no child
                                             Master(id::kTrackEntry, {Raw(Hex("0000"))}),  // nor here
                                             Track(3, 2, "A_AAC")})})}));
    EXPECT_EQ(500u, open.Model().Info.TimecodeScale.Get());
    EXPECT_EQ(2u, open.file.GetTrackCnt());
    EXPECT_EQ(0u, open.file.FindTrack(1)->ParsedParts);
}

TEST(Document, DurationInNanoseconds) {
    const struct {
        const char* name;
        Element info;
        uint64_t nanoseconds;
    } rows[] = {
        {"plain", Info(1234.5), 1234500000},
        {"another scale", Info(3, 7), 21},
        {"4-byte float", Master(id::kInfo, {Flt4(id::kDuration, 2.5f)}), 2500000},
        {"none", Master(id::kInfo, {Uint(id::kTimecodeScale, 1)}), 0},
        {"NaN", Info(std::nan("")), 0},
        {"negative", Info(-1), 0},
        {"infinite", Info(INFINITY), UINT64_MAX},
        {"too large", Info(1e300), UINT64_MAX},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        InitialisedFile open(Write({EbmlHeader(), Segment({row.info, Tracks()})}));
        EXPECT_EQ(row.nanoseconds, open.Model().GetDuration());
    }
}

TEST(Document, AttachedFilesAreKnownByPlaceOnly) {
    const Document file = Write({EbmlHeader(), Segment({SeekHead({{id::kAttachments, "files"}}), Info(1),
                                                        Tracks(), Attachments().Label("files")})});
    InitialisedFile open(file);
    ASSERT_EQ(1u, open.Model().Attachments.size());
    const reader::AttachedFile& attached = *open.Model().Attachments[0]->Files[0];
    EXPECT_EQ(file.DataOf("file data"), attached.DataPosition);
    EXPECT_EQ(50u, attached.DataSize);
    EXPECT_EQ(9u, attached.FileUID.Get());
}

}  // namespace
}  // namespace testing_support
