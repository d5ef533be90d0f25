// The extractor object: the file's MIME type, the thumbnail hint, tracks by index, when an index is built.
#include "matroska/MatroskaFixture.h"

namespace testing_support {
namespace {

std::string ContainerMime(const sp<MediaExtractor>& extractor) {
    return Describe(extractor->getMetaData());
}

TEST(Extractor, ContainerMime) {
    const Element audio = Mp3Track(1), video = Mpeg2Track(2), text = TextTrack(3);
    const Element unmappable = Track(1, kAudioType, "A_UNKNOWN");
    const struct {
        const char* name;
        const char* docType;
        std::vector<Elements> tracks;
        const char* mime;
    } rows[] = {
        {"one audio", "matroska", {{audio}}, "mime=audio/x-matroska"},
        {"one audio that is not offered", "matroska", {{unmappable}}, "mime=audio/x-matroska"},
        {"audio and subtitle", "matroska", {{audio, text}}, "mime=video/x-matroska"},
        {"one video", "matroska", {{video}}, "mime=video/x-matroska"},
        {"one audio in each of two Tracks", "matroska", {{audio}, {audio}}, "mime=video/x-matroska"},
        {"no track", "matroska", {}, "mime=video/x-matroska"},
        {"webm with audio only", "webm", {{audio}}, "mime=video/webm"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Elements children = {Info(1)};
        for (const Elements& entries : row.tracks) children.push_back(Master(id::kTracks, entries));
        EXPECT_EQ(row.mime, ContainerMime(Open(Write({EbmlHeader(row.docType), Segment(children)}))));
    }
}

TEST(Extractor, AFileThatCannotBeOpenedHasNoTracks) {
    const struct {
        const char* name;
        Bytes bytes;
        const char* mime;
    } rows[] = {
        {"empty", {}, "mime=video/x-matroska"},
        {"noise", Pattern(500, 3), "mime=video/x-matroska"},
        {"header only", Write({EbmlHeader("webm")}).bytes, "mime=video/webm"},
        {"read version 3",
         Write({EbmlHeader("webm", 3), Segment({Master(id::kTracks, {Mp3Track(1)})})}).bytes,
         "mime=video/webm"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const sp<MediaExtractor> extractor = Open(row.bytes);
        EXPECT_EQ(0u, extractor->countTracks());
        EXPECT_EQ(row.mime, ContainerMime(extractor));
        EXPECT_EQ(nullptr, extractor->getTrack(0).get());
        EXPECT_EQ(nullptr, extractor->getTrackMetaData(0, 1).get());
    }
}

TEST(Extractor, TracksByIndex) {
    const sp<MediaExtractor> extractor = Open(Movie({Mpeg2Track(1), Mp3Track(2)}, {Cluster(0, {})}));
    ASSERT_EQ(2u, extractor->countTracks());
    for (size_t index : {size_t{2}, SIZE_MAX}) {
        EXPECT_EQ(nullptr, extractor->getTrack(index).get());
        EXPECT_EQ(nullptr, extractor->getTrackMetaData(index, 0).get());
    }
    const sp<MediaSource> first = extractor->getTrack(1), second = extractor->getTrack(1);
    EXPECT_NE(first.get(), second.get());
    EXPECT_EQ(extractor->getTrackMetaData(1, 0).get(), first->getFormat().get());
    EXPECT_EQ(first->getFormat().get(), second->getFormat().get());
    EXPECT_EQ(15u, extractor->flags());
}

TEST(Extractor, ThumbnailTimeIsAQuarterOfTheDuration) {
    auto thumbnail = [](const sp<MediaExtractor>& extractor, size_t index, uint32_t flags) {
        int64_t timeUs = -1;
        extractor->getTrackMetaData(index, flags)->findInt64(android::kKeyThumbnailTime, &timeUs);
        return timeUs;
    };
    const sp<MediaExtractor> extractor =
        Open(Movie({Mp3Track(1), Mpeg2Track(2), Mpeg2Track(3)}, {Cluster(0, {})}));
    EXPECT_EQ(-1, thumbnail(extractor, 1, 0));
    EXPECT_EQ(-1, thumbnail(extractor, 1, 2));
    EXPECT_EQ(-1, thumbnail(extractor, 0, 1));  // asked for one track, computed for the first video track
    EXPECT_EQ(2500000, thumbnail(extractor, 1, 0));
    EXPECT_EQ(-1, thumbnail(extractor, 2, 1));  // later video tracks get none
    extractor->getTrackMetaData(1, 0)->remove(android::kKeyThumbnailTime);
    EXPECT_EQ(-1, thumbnail(extractor, 1, 1));  // it was computed once

    const sp<MediaExtractor> audioOnly = Open(Movie({Mp3Track(1)}, {Cluster(0, {})}));
    EXPECT_EQ(-1, thumbnail(audioOnly, 0, 1));
}

TEST(ExtractorDeathTest, ATrackWhoseMimeTypeWasTakenAway) {
    const sp<MediaExtractor> extractor = Open(Movie({Mpeg2Track(1)}, {Cluster(0, {})}));
    extractor->getTrackMetaData(0, 0)->remove(android::kKeyMIMEType);
    const char* const condition = "info->mMeta->findCString\\(kKeyMIMEType, &mime\\)";
    EXPECT_DEATH(extractor->getTrackMetaData(0, MediaExtractor::kIncludeExtensiveMetaData),
                 std::string("MatroskaExtExtractor:1276 CHECK\\(") + condition + "\\) failed");
}

TEST(Extractor, ThumbnailTimeRoundsTheDurationFirst) {
    // 3499 ns are 3 microseconds, a quarter of them is 0; 3500 ns are 4, a quarter is 1.
    for (const auto& row : {std::pair<double, int64_t>{3499, 0}, {3500, 1}}) {
        const Document file =
            Write({EbmlHeader(), Segment({Info(row.first, 1), Master(id::kTracks, {Mpeg2Track(1)}),
                                          Master(id::kCues, {Bin(id::kVoid, Bytes(1))})})});
        int64_t timeUs = -1;
        Open(file)->getTrackMetaData(0, 1)->findInt64(android::kKeyThumbnailTime, &timeUs);
        EXPECT_EQ(row.second, timeUs);
    }
}

TEST(Extractor, ACachingSourceGetsNoIndex) {
    const Document file =
        Write({EbmlHeader(), Segment({Info(10000), Master(id::kTracks, {Mpeg2Track(1)}),
                                      Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Hex("01"))}),
                                      Cluster(4000, {SimpleBlock(1, 0, kKeyFrame, Hex("02"))})})});
    for (uint32_t flags : {0u, 4u, 15u, 8u, 3u}) {
        SCOPED_TRACE(flags);
        Faults faults;
        faults.flags = flags;
        LogCapture log;
        const sp<MediaExtractor> extractor = Open(file, faults);
        const bool isCaching = (flags & 4) != 0;
        EXPECT_EQ(isCaching ? 1u : 0u, log.Count(ANDROID_LOG_DEBUG, kTag, "mkv http source"));
        int64_t duration = 0;
        extractor->getTrackMetaData(0, 0)->findInt64(android::kKeyDuration, &duration);
        // The visit of the Clusters that stands in for missing Cues rewrites the duration.
        EXPECT_EQ(isCaching ? 10000000 : 4000000, duration);
    }
}

}  // namespace
}  // namespace testing_support
