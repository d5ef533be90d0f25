// Blocks: their headers, the masters that hold them, and the three ways in which a block's bytes are read.
#include <string.h>

#include <algorithm>
#include <new>

#include "matroska/reader/Lacing.h"
#include "matroska/reader/MatroskaReader.h"
#include "matroska/reader/ParseChildren.h"
#include "matroska/reader/Vint.h"

namespace MatroskaExtReader {

namespace {

// Deliberate: the room of a header is counted in for RealMedia video, although none is written there.
constexpr uint32_t kRealVideoAllowance = 27;
constexpr uint32_t kRealAudioHeader = 16;
constexpr uint64_t kMostCodecStateBytes = 1u << 20;

// Room in a caller's buffer that is filled from the front.
struct Room {
    uint8_t* next;
    uint64_t left;

    bool Put(const uint8_t* bytes, uint64_t size) {
        if (size > left) return false;
        if (size != 0) memcpy(next, bytes, static_cast<size_t>(size));
        next += size;
        left -= size;
        return true;
    }
};

// The record in front of each RealMedia audio frame, in the host's byte order.
void WriteRealAudioHeader(uint8_t* out, uint32_t time, uint16_t frameSize) {
    const uint32_t payload = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(out + kRealAudioHeader));
    memset(out, 0, kRealAudioHeader);
    memcpy(out, &time, sizeof(time));
    memcpy(out + 10, &frameSize, sizeof(frameSize));
    memcpy(out + 12, &payload, sizeof(payload));
}

}  // namespace

// ---- headers and masters
// -----------------------------------------------------------------------------------------

namespace {

constexpr unsigned kBehindNumber = 3;  // the timecode and the flags

// The file's bytes at its position; from the first that are missing on nothing is read, and nothing fails.
struct ZerosBehind {
    CMatroskaFile* file;
    bool isCut;
    bool Take(uint8_t* out, unsigned n) {
        isCut = isCut || !file->Take(out, n);
        return true;
    }
};

void TakeRest(BlockHeader* header, const uint8_t* bytes, uint64_t dataPosition, uint64_t end) {
    header->timeCode = static_cast<int16_t>(bytes[0] << 8 | bytes[1]);
    header->flags = bytes[2];
    header->dataPosition = dataPosition;
    header->dataSize = end > dataPosition ? end - dataPosition : 0;
}

}  // namespace

// A track number, two bytes of timecode and the flags. The shortest header is read at once; the first byte
// says how many more a longer track number takes. What cannot be read counts as zeros.
BlockHeader ReadBlockHeader(CMatroskaFile& file, uint64_t position, uint64_t end) {
    uint8_t bytes[8 + kBehindNumber] = {};
    BlockHeader header = {};
    file.SeekTo(position);
    const bool isCut = !file.Take(bytes, 1 + kBehindNumber);
    if (TakeShortHeader(bytes, position, end, &header)) return header;
    header = BlockHeader();
    ZerosBehind zeros = {&file, isCut};
    const unsigned length = TakeNumber(SizeLength, zeros, bytes, 1 + kBehindNumber, kBehindNumber);
    const unsigned numberBytes = length == 0 ? 1 : length;  // a byte that begins no number is passed over
    if (length != 0) header.trackNumber = SizeValue(bytes, length);
    // A number with all bits set stands for what is left of the file, as any size does.
    if (length != 0 && header.trackNumber == UnknownSizeMarker(length)) {
        file.SeekTo(position + length);
        header.trackNumber = file.LeftInFile();
    }
    TakeRest(&header, bytes + numberBytes, position + numberBytes + kBehindNumber, end);
    return header;
}

Result SimpleBlock::Parse(CMatroskaNode* node) {
    SetHeader(ReadBlockHeader(*node->File(), node->DataStart(), node->PayloadEnd()));
    return kOk;
}

Result BlockGroup::Parse(CMatroskaNode* node) {
    static const ChildRow<BlockGroup> kRows[] = {
        {id::kBlock, [](BlockGroup& group, CMatroskaNode* child) { return group.Block.Parse(child); }},
        {id::kBlockDuration, &BlockGroup::BlockDuration},
        {id::kReferencePriority, &BlockGroup::ReferencePriority},
        {id::kReferenceBlock,
         [](BlockGroup& group, CMatroskaNode* child) -> Result {
             const Result result = group.ReferenceBlock.Parse(child);
             // One that is too long for a number still says that the frame refers to another.
             if (child->Size() > sizeof(int64_t)) group.ReferenceBlock.Set(0);
             return result;
         }},
        {id::kReferenceVirtual, &BlockGroup::ReferenceVirtual},
        {id::kCodecState,
         [](BlockGroup& group, CMatroskaNode* child) -> Result {
             // One that reaches past its group would be read again with every group that does the same.
             const bool isKept = child->Size() <= kMostCodecStateBytes &&
                                 child->PayloadEnd() == child->End() &&
                                 child->File()->CanDeliver(child->DataStart(), child->Size());
             return isKept ? group.CodecState.ReadPayload(child) : kFailure;
         }},
        {id::kTimeSlice,
         [](BlockGroup& group, CMatroskaNode* child) -> Result {
             return group.TimeSlices.size() < limit::kTimeSlices ? group.TimeSlices.Parse(child) : kFailure;
         }},
    };
    return ParseChildren(*this, node, kRows);
}

Result TimeSlice::Parse(CMatroskaNode* node) {
    static const ChildRow<TimeSlice> kRows[] = {
        {id::kLaceNumber, &TimeSlice::LaceNumber},
        {id::kFrameNumber, &TimeSlice::FrameNumber},
        {id::kDelay, &TimeSlice::Delay},
        {id::kSliceDuration, &TimeSlice::SliceDuration},
    };
    return ParseChildren(*this, node, kRows);
}

Result BlockMore::Parse(CMatroskaNode* node) {
    static const ChildRow<BlockMore> kRows[] = {
        {id::kBlockAddId, &BlockMore::BlockAddID},
        {id::kBlockAdditional, &BlockMore::BlockAdditional},
    };
    return ParseChildren(*this, node, kRows);
}

Result BlockAdditions::Parse(CMatroskaNode* node) {
    return VisitChildren(node, [this](CMatroskaNode* child) {
        if (child->Id() == id::kBlockMore && child->File()->Admit(Kept::kClusterObject, child))
            (void)CNode<BlockMore>::Parse(child);
        return true;
    });
}

Result Cluster::Parse(CMatroskaNode* node) {
    static const ChildRow<Cluster> kRows[] = {
        {id::kClusterTimecode, &Cluster::Timecode},
        {id::kClusterPosition, &Cluster::Position},
        {id::kClusterPrevSize, &Cluster::PrevSize},
        {id::kBlockGroup,
         [](Cluster& cluster, CMatroskaNode* child) -> Result {
             return child->File()->Admit(Kept::kClusterObject, child) ? cluster.BlockGroups.Parse(child)
                                                                      : kFailure;
         }},
        {id::kSimpleBlock,
         [](Cluster& cluster, CMatroskaNode* child) -> Result {
             return child->File()->Admit(Kept::kClusterObject, child) ? cluster.SimpleBlocks.Parse(child)
                                                                      : kFailure;
         }},
    };
    return ParseChildren(*this, node, kRows);
}

Result Cluster::ParseTimeCode(CMatroskaNode* node) {
    return VisitChildren(node, [this](CMatroskaNode* child) {
        if (child->Id() != id::kClusterTimecode) return true;
        (void)Timecode.Parse(child);
        return false;
    });
}

// ---- sizes
// -------------------------------------------------------------------------------------------------------

Result SimpleBlock::Refuse(CMatroskaNode* node, LossKind kind) {
    mIsRefused = true;
    DecodedFrames.clear();
    node->File()->Losses.Add(kind, DataPosition, DataSize);
    return kFailure;
}

Result SimpleBlock::ParseData(CMatroskaNode* node, const TrackEntry* track, bool sizesOnly) {
    CMatroskaFile* file = node->File();
    if (!Header().IsDeliverable(*file)) return Refuse(node, LossKind::kBeyondSource);
    file->SeekTo(DataPosition);
    FramesPosition = DataPosition;
    const size_t firstSize = FrameSizes.size();  // a block that is parsed again has its sizes twice
    bool hasRoom = true;
    if (Lacing() == kLacingNone) {
        hasRoom = FrameSizes.Append(DataSize);
    } else {
        const CMatroskaFile::Whole header(file, DataPosition + DataSize);
        const LacingResult lacing =
            DecodeLacing(Lacing(), DataPosition + DataSize, *file,
                         [&](uint64_t size) { hasRoom = hasRoom && FrameSizes.Append(size); });
        FramesPosition = lacing.framesPosition;
        if (!lacing.isWhole) return Refuse(node, LossKind::kBadLacing);
    }
    if (!hasRoom) return Refuse(node, LossKind::kRefusedAllocation);
    return sizesOnly || track == nullptr ? kOk : ReadFrames(node, *track, firstSize);
}

// Reads each frame whole and undoes the track's encodings. What grew beyond the block's limit stays as
// stored.
Result SimpleBlock::ReadFrames(CMatroskaNode* node, const TrackEntry& track, size_t firstSize) {
    CMatroskaFile* file = node->File();
    uint32_t roomLeft = MostRestoredBytes(*file);
    file->SeekTo(FramesPosition);
    for (size_t i = firstSize; i < FrameSizes.size(); ++i) {
        AutoPtr<CBinary> frame = new (std::nothrow) CBinary;
        if (frame == nullptr || !frame->Resize(static_cast<uint32_t>(FrameSizes[i])))
            return Refuse(node, LossKind::kRefusedAllocation);
        if (Failed(file->Read(frame->data(), frame->size()))) return Refuse(node, LossKind::kBeyondSource);
        if (!DecodedFrames.Append(frame)) return Refuse(node, LossKind::kRefusedAllocation);
    }
    for (const AutoPtr<CBinary>& frame : DecodedFrames) {
        const uint32_t most = std::min(roomLeft, limit::kInflatedFrameBytes);
        const int expanded = track.Expand(*frame, encoding::kScopeFrames, file->SharedInflater(), most);
        if (expanded == 0 && track.IsZlibCompressed) {
            file->Losses.Add(LossKind::kBadCompression, DataPosition, frame->size());
        }
        roomLeft -= std::min(roomLeft, frame->size());
    }
    return kOk;
}

// A block that is only looked into while the file is opened may not grow out of proportion.
uint32_t SimpleBlock::MostRestoredBytes(const CMatroskaFile& file) const {
    return file.IsOpening() ? limit::RestoredBytesWhileOpening(DataSize) : limit::kRestoredBlockBytes;
}

uint64_t SimpleBlock::DecodedSize(const TrackEntry& track) const {
    if (track.IsVorbis) return DecodedFrames.empty() ? 0 : DecodedFrames.front()->size();
    const uint32_t extra = !track.IsRealMedia                         ? 0
                           : track.TrackType.Get() == kTrackTypeVideo ? kRealVideoAllowance
                                                                      : kRealAudioHeader;
    uint64_t total = 0;
    for (const AutoPtr<CBinary>& frame : DecodedFrames) total += uint64_t{frame->size()} + extra;
    return total;
}

uint64_t SimpleBlock::RestoredSize(const TrackEntry& track) const {
    uint64_t total = 0;
    for (const uint64_t size : FrameSizes) total += size + track.StrippedHeaderBytes;
    return total;
}

uint32_t SimpleBlock::GetSize(CMatroskaNode* node, const TrackEntry* track) {
    uint64_t size = DataSize;
    if (track != nullptr && track->IsDecoded()) {
        if (DecodedFrames.empty() && !mIsRefused) (void)ParseData(node, track, false);
        size = DecodedSize(*track);
    } else if (track != nullptr && track->StrippedHeaderBytes != 0) {
        if (FrameSizes.empty() && !mIsRefused) (void)ParseData(node, track, true);
        size = mIsRefused ? 0 : RestoredSize(*track);
        if (size > DataSize && size > MostRestoredBytes(*node->File()))
            (void)Refuse(node, LossKind::kTooLarge);
    } else if (!mIsRefused && !Header().IsDeliverable(*node->File())) {
        (void)Refuse(node, LossKind::kBeyondSource);
    }
    return mIsRefused ? 0 : static_cast<uint32_t>(size);
}

// ---- reading
// -----------------------------------------------------------------------------------------------------

Result SimpleBlock::Read(CMatroskaNode* node, const TrackEntry* track, uint8_t* out, long& len,
                         uint32_t timeBase) {
    Result result = kFailure;
    if (mIsRefused) {
        len = 0;
    } else if (track != nullptr && track->IsDecoded()) {
        result = ReadDecoded(node, *track, out, len, timeBase);
    } else if (track != nullptr && track->StrippedHeaderBytes != 0) {
        result = ReadRestoringHeaders(node, *track, out, len);
    } else {
        result = ReadPlain(node, out, len);
    }
    return result;
}

Result SimpleBlock::ReadDecoded(CMatroskaNode* node, const TrackEntry& track, uint8_t* out, long& len,
                                uint32_t timeBase) {
    Room room = {out, static_cast<uint64_t>(len)};
    len = 0;
    if (DecodedFrames.empty() && Failed(ParseData(node, &track, false))) return kFailure;
    if (track.IsVorbis) {
        if (DecodedFrames.empty()) return kOk;  // a lace without frames
        const AutoPtr<CBinary> frame = DecodedFrames.front();
        DecodedFrames.PopFront();
        if (!room.Put(frame->data(), frame->size())) return kFailure;
        len = static_cast<long>(room.next - out);
        return kOk;
    }
    const bool isRealAudio = track.IsRealMedia && track.TrackType.Get() == kTrackTypeAudio;
    const bool isDropped = track.IsRealMedia && !isRealAudio && track.TrackType.Get() != kTrackTypeVideo;
    for (const AutoPtr<CBinary>& frame : DecodedFrames) {
        if (isDropped) break;
        if (isRealAudio) {
            if (room.left < kRealAudioHeader) return kFailure;
            const uint32_t time = static_cast<uint32_t>(TimeCode.Get()) + timeBase;
            WriteRealAudioHeader(room.next, time, static_cast<uint16_t>(frame->size()));
            room.next += kRealAudioHeader;
            room.left -= kRealAudioHeader;
        }
        if (!room.Put(frame->data(), frame->size())) return kFailure;
    }
    len = static_cast<long>(room.next - out);
    return kOk;
}

Result SimpleBlock::ReadRestoringHeaders(CMatroskaNode* node, const TrackEntry& track, uint8_t* out,
                                         long& len) {
    CMatroskaFile* file = node->File();
    Room room = {out, static_cast<uint64_t>(len)};
    len = 0;
    file->SeekTo(FramesPosition);
    for (const uint64_t size : FrameSizes) {
        for (const AutoPtr<ContentEncoding>& encoding : track.Encodings) {
            const ByteBuffer& header = encoding->Compression.ContentCompSettings;
            if (encoding->IsHeaderStripping() && !room.Put(header.data(), header.size())) return kFailure;
        }
        if (size > room.left) return kFailure;
        if (Failed(file->Read(room.next, static_cast<uint32_t>(size)))) return kFailure;
        room.next += size;
        room.left -= size;
    }
    len = static_cast<long>(room.next - out);
    return kOk;
}

Result SimpleBlock::ReadPlain(CMatroskaNode* node, uint8_t* out, long& len) {
    CMatroskaFile* file = node->File();
    const uint64_t room = static_cast<uint64_t>(len);
    uint64_t size = DataSize;
    len = 0;
    file->SeekTo(DataPosition);
    if (Lacing() != kLacingNone) {
        const CMatroskaFile::Whole header(file, DataPosition + DataSize);
        if (!PassLacing(Lacing(), DataPosition + DataSize, *file, &size))
            return Refuse(node, LossKind::kBadLacing);
    }
    if (size > room) return kFailure;
    const Result result = file->Read(out, static_cast<uint32_t>(size));
    if (!Failed(result)) len = static_cast<long>(size);
    return result;
}

}  // namespace MatroskaExtReader
