// The order of opening a document, and the look-up of its tracks.
#include <string.h>

#include <algorithm>

#include "matroska/reader/MatroskaReader.h"
#include "matroska/reader/ParseChildren.h"

namespace MatroskaExtReader {

namespace {

constexpr uint64_t kFirstUnreadableVersion = 3;

}  // namespace

HeaderVerdict JudgeHeader(const EBML& header) {
    const char* type = header.DocType.c_str();
    if (strcmp(type, "matroska") != 0 && strcmp(type, "webm") != 0) return HeaderVerdict::kOtherDocType;
    return header.DocTypeReadVersion.Get() < kFirstUnreadableVersion ? HeaderVerdict::kReadable
                                                                     : HeaderVerdict::kTooNew;
}

Result CMatroskaFile::Parse(CMatroskaNode* root) {
    return WalkTopLevel(root, true);
}

Result CMatroskaFile::ParseHeader(CMatroskaNode* root) {
    return WalkTopLevel(root, false);
}

Result CMatroskaFile::WalkTopLevel(CMatroskaNode* root, bool entersSegments) {
    const Heads heads(this);
    bool isRejected = false;
    uint32_t elementsLeft = entersSegments ? UINT32_MAX : limit::kSniffedElements;
    const Result result = VisitChildren(root, [&](CMatroskaNode* child) {
        if (child->Id() == id::kEbml) {
            (void)Header.Parse(child);
            isRejected = JudgeHeader(Header) != HeaderVerdict::kReadable;
        } else if (child->Id() == id::kSegment && entersSegments && Segment.Info.SegmentUID.empty()) {
            // Deliberate: a Segment without a UID lets a later one add to the same model, one with a UID does
            // not.
            if (Admit(Kept::kSegment, child)) (void)Segment.ParseMinimal(child);
        }
        return !isRejected && --elementsLeft != 0;
    });
    return isRejected ? kFailure : result;
}

Result CMatroskaFile::Init() {
    SeekTo(0);
    const android::sp<CMatroskaNode> root = new CMatroskaNode(this);
    const Heads heads(this);
    if (Failed(Parse(root.get()))) return kFailure;
    mSegmentNode = root->Child(id::kSegment, true);
    for (const AutoPtr<Track>& tracks : Segment.Tracks) {
        for (const AutoPtr<TrackEntry>& entry : tracks->Entries) entry->InitInfo();
    }
    IndexTracks();
    mMasterTrack = static_cast<uint32_t>(Segment.GetMasterTrack());
    return mSegmentNode != nullptr ? kOk : kFailure;
}

android::sp<CMatroskaNode> CMatroskaFile::FirstCluster() {
    if (mSegmentNode != nullptr && !mKnowsFirstCluster) {
        const Heads heads(this);
        const uint64_t trouble = Trouble();
        mFirstCluster = mSegmentNode->Child(id::kCluster, true);
        mKnowsFirstCluster = Trouble() == trouble;
    }
    return mFirstCluster != nullptr ? mFirstCluster->Copy() : nullptr;
}

void CMatroskaFile::NoteBlockOf(uint64_t trackNumber) {
    TrackEntry* const track =
        trackNumber <= UINT32_MAX ? FindTrack(static_cast<uint32_t>(trackNumber)) : nullptr;
    if (track != nullptr) track->HasBlock = true;
}

uint32_t CMatroskaFile::GetTrackCnt() const {
    size_t count = 0;
    for (const AutoPtr<Track>& tracks : Segment.Tracks) count += tracks->Entries.size();
    return static_cast<uint32_t>(count);
}

// Of entries with the same number the one that answers comes first: the last Tracks element that has it
// counts.
void CMatroskaFile::IndexTracks() {
    mTracksByNumber.clear();
    const bool hasRoom = mTracksByNumber.Reserve(GetTrackCnt());
    if (!hasRoom) Losses.Add(LossKind::kRefusedAllocation, Segment.DataStart, 0);
    for (size_t i = hasRoom ? Segment.Tracks.size() : 0; i-- > 0;) {
        for (const AutoPtr<TrackEntry>& entry : Segment.Tracks[i]->Entries) {
            if (entry->TrackNumber.Get() <= UINT32_MAX) (void)mTracksByNumber.Append(entry.get());
        }
    }
    std::stable_sort(mTracksByNumber.begin(), mTracksByNumber.end(), [](TrackEntry* a, TrackEntry* b) {
        return a->TrackNumber.Get() < b->TrackNumber.Get();
    });
}

TrackEntry* CMatroskaFile::FindTrack(uint32_t number) const {
    TrackEntry* const* found =
        std::lower_bound(mTracksByNumber.begin(), mTracksByNumber.end(), number,
                         [](TrackEntry* entry, uint64_t n) { return entry->TrackNumber.Get() < n; });
    const bool isFound = found != mTracksByNumber.end() && (*found)->TrackNumber.Get() == number;
    return isFound ? *found : nullptr;
}

}  // namespace MatroskaExtReader
