// The Segment: its full and its minimal walk, SeekHead, Info, and what is answered from them.
#include <set>

#include "matroska/reader/MatroskaReader.h"
#include "matroska/reader/ParseChildren.h"

namespace MatroskaExtReader {

Result EBML::Parse(CMatroskaNode* node) {
    static const ChildRow<EBML> kRows[] = {
        {id::kEbmlVersion, &EBML::EBMLVersion},
        {id::kEbmlReadVersion, &EBML::EBMLReadVersion},
        {id::kEbmlMaxIdLength, &EBML::EBMLMaxIDLength},
        {id::kEbmlMaxSizeLength, &EBML::EBMLMaxSizeLength},
        {id::kDocType, &EBML::DocType},
        {id::kDocTypeVersion, &EBML::DocTypeVersion},
        {id::kDocTypeReadVersion, &EBML::DocTypeReadVersion},
    };
    return ParseWhole(*this, node, kRows);
}

Result SeekHead::Parse(CMatroskaNode* node) {
    static const ChildRow<SeekHead> kRows[] = {
        {id::kSeekId, &SeekHead::SeekID},
        {id::kSeekPosition, &SeekHead::SeekPosition},
    };
    return ParseChildren(*this, node, kRows);
}

Result Seek::Parse(CMatroskaNode* node) {
    return VisitWhole(node, [this](CMatroskaNode* child) {
        if (child->Id() == id::kSeek && child->File()->Admit(Kept::kSeekEntry, child))
            (void)Entries.Parse(child);
        return true;
    });
}

Result Info::Parse(CMatroskaNode* node) {
    static const ChildRow<MatroskaExtReader::Info> kRows[] = {
        {id::kSegmentUid, &Info::SegmentUID},
        {id::kPrevUid, &Info::PrevUID},
        {id::kNextUid, &Info::NextUID},
        {id::kSegmentFilename, &Info::SegmentFilename},
        {id::kPrevFilename, &Info::PrevFilename},
        {id::kNextFilename, &Info::NextFilename},
        {id::kTimecodeScale, &Info::TimecodeScale},
        {id::kDuration, &Info::Duration},
        {id::kDateUtc, &Info::DateUTC},
        {id::kTitle, &Info::Title},
        {id::kMuxingApp, &Info::MuxingApp},
        {id::kWritingApp, &Info::WritingApp},
    };
    return ParseWhole(*this, node, kRows);
}

Result Segment::Parse(CMatroskaNode* node) {
    static const ChildRow<Segment> kRows[] = {
        {id::kSeekHead, [](Segment& s, CMatroskaNode* child) { return s.ParseSeekHead(child); }},
        {id::kInfo, [](Segment& s, CMatroskaNode* child) { return s.Info.Parse(child); }},
        {id::kCluster, [](Segment& s, CMatroskaNode* child) { return s.Clusters.Parse(child); }},
        {id::kTracks, [](Segment& s, CMatroskaNode* child) { return s.Tracks.Parse(child); }},
        {id::kCues, [](Segment& s, CMatroskaNode* child) { return s.ParseCues(child); }},
        {id::kAttachments, [](Segment& s, CMatroskaNode* child) { return s.Attachments.Parse(child); }},
        {id::kChapters, [](Segment& s, CMatroskaNode* child) { return s.Chapters.Parse(child); }},
    };
    if (node == nullptr) return kNullNode;
    DataStart = node->DataStart();
    Size = node->Size();
    return ParseChildren(*this, node, kRows);
}

Result Segment::ParseSeekHead(CMatroskaNode* node) {
    return node->File()->Admit(Kept::kSeekHead, node) ? SeekHeads.Parse(node) : kFailure;
}

Result Segment::ParseCues(CMatroskaNode* node) {
    return node->File()->Admit(Kept::kCues, node) ? Cues.Parse(node) : kFailure;
}

Result Segment::ParseMinimal(CMatroskaNode* node) {
    if (node == nullptr) return kNullNode;
    DataStart = node->DataStart();
    Size = node->Size();
    const int headElements = ParseHead(node);
    FollowSeekHeads(node);
    if (headElements >= 3) ParseBehindClusters(node);
    return kOk;
}

// What the walk over the head has come by.
struct Segment::Head {
    explicit Head(CMatroskaFile* file) : clusters(file) {}

    int count = 0;  // of Info, SeekHead and Tracks
    bool hasInfo = false, hasTracks = false;
    ClusterScan clusters;
};

// Reads Info, SeekHead and Tracks where they come before the Clusters, and Cues met on the way. Answers how
// many of the three kinds it read.
int Segment::ParseHead(CMatroskaNode* node) {
    Head head(node->File());
    bool isWhole = true;
    (void)VisitChildren(node, [&](CMatroskaNode* child) { return isWhole = ParseHeadElement(child, &head); });
    const bool areAll = isWhole && NeedsClusters(node->File()) && head.clusters.IsSound();
    PassedClusters = areAll ? head.clusters.Points() : nullptr;
    return head.count;
}

// As far as is known an index will be made of them.
bool Segment::NeedsClusters(const CMatroskaFile* file) const {
    return Cues.isEmpty() && !file->CachesNetwork();
}

// False where the walk ends early: once three were read and Tracks is among them, at a Cluster of unknown
// size, which runs to its parent's end, and behind Info and Tracks at any Cluster where each step over one
// would be fetched.
bool Segment::ParseHeadElement(CMatroskaNode* child, Head* head) {
    switch (child->Id()) {
        case id::kInfo:
            (void)Info.Parse(child);
            head->hasInfo = true;
            ++head->count;
            break;
        case id::kSeekHead:
            (void)ParseSeekHead(child);
            ++head->count;
            break;
        case id::kTracks:
            (void)Tracks.Parse(child);
            head->hasTracks = true;
            ++head->count;
            break;
        case id::kCues:
            (void)ParseCues(child);
            break;
        case id::kCluster:
            if (child->HasUnknownSize()) return false;
            if (child->File()->CachesNetwork() && head->hasInfo && head->hasTracks) return false;
            if (NeedsClusters(child->File())) head->clusters.Add(child);
            break;
        default:
            break;
    }
    return !(head->count > 2 && head->hasTracks);
}

// SeekHeads that a SeekHead names, as long as they lie further on in the file.
void Segment::FollowSeekHeads(CMatroskaNode* node) {
    CMatroskaFile* file = node->File();
    AutoPtr<CMatroskaNode> further = node->Copy();
    for (uint32_t followed = 0;; ++followed) {  // bounded by kFollowedSeekHeads
        const uint64_t position = node->FindPos(id::kSeekHead, static_cast<int64_t>(file->Position()));
        if (position == 0) return;
        if (followed == limit::kFollowedSeekHeads) {
            file->Losses.Add(LossKind::kLimit, position, 0);
            return;
        }
        file->SeekTo(position);
        further = new CMatroskaNode(node);
        if (!further->IsValid() || further->Id() != id::kSeekHead) return;
        (void)ParseSeekHead(further.get());
    }
}

// Cues, Chapters and Attachments, where they were not met yet and the SeekHead leads to them.
void Segment::ParseBehindClusters(CMatroskaNode* node) {
    AutoPtr<CMatroskaNode> child;
    if (Cues.isEmpty()) ParseListedCues(node);
    if (Chapters.isEmpty() && (child = node->Child(id::kChapters, false)) != nullptr) {
        (void)Chapters.Parse(child.get());
    }
    if (Attachments.isEmpty() && (child = node->Child(id::kAttachments, false)) != nullptr) {
        (void)Attachments.Parse(child.get());
    }
}

// The Cues that SeekHeads list, each with those that follow it before a Cluster. None is read twice.
void Segment::ParseListedCues(CMatroskaNode* node) {
    std::set<uint64_t> parsed;  // header starts
    for (const AutoPtr<Seek>& list : SeekHeads) {
        for (const AutoPtr<SeekHead>& entry : list->Entries) {
            const uint64_t position = AddWrapping(entry->SeekPosition.Get(), DataStart);
            const bool isCues = static_cast<uint32_t>(entry->SeekID.Get()) == id::kCues;
            if (!isCues || position > kMaxPosition || parsed.count(position) != 0) continue;
            node->File()->SeekTo(position);
            const AutoPtr<CMatroskaNode> child = new CMatroskaNode(node);
            if (child->Id() != id::kCues) continue;
            do {  // bounded: every step moves forward
                const bool isNew = child->Id() == id::kCues && parsed.insert(child->HeaderStart()).second;
                if (isNew) (void)ParseCues(child.get());
            } while (child->Next(false) && child->Id() != id::kCluster);
        }
    }
}

uint64_t Segment::GetDuration() const {
    return SaturatingUint64(static_cast<double>(Info.TimecodeScale.Get()) * Info.Duration.Get());
}

uint64_t Segment::GetMasterTrack() const {
    uint64_t firstAudio = 0;
    for (const AutoPtr<Track>& tracks : Tracks) {
        for (const AutoPtr<TrackEntry>& entry : tracks->Entries) {
            const uint64_t number = entry->TrackNumber.Get();
            if (entry->TrackType.Get() == kTrackTypeVideo) {
                if (number != 0) return number;
                break;  // the first video track speaks for its Tracks element
            }
            if (entry->TrackType.Get() == kTrackTypeAudio && firstAudio == 0) firstAudio = number;
        }
    }
    return firstAudio != 0 ? firstAudio : 1;
}

}  // namespace MatroskaExtReader
