// The document model: one class for each master element of a Matroska file (RFC 9559, section 5), fields in
// their documented order under the element's own name, defaults visible where the object is made.
//
// X::Parse walks the children of the element at `node` and fills what it knows; unknown children are skipped,
// a bad member does not fail its parent. It answers kOk, kNullNode, or kFailure for an element without a
// readable child. Objects belong to the list that holds them; nothing here locks: one thread at a time per
// file.
//
// Two namings are this model's own: `Seek` is the SeekHead element (a list), `SeekHead` one entry of it;
// `Track`, `Cue`, `Chapter`, `Attachment` are the elements Tracks, Cues, Chapters and Attachments.
#pragma once

#include <stdint.h>

#include <vector>

#include "matroska/reader/Array.h"
#include "matroska/reader/Containers.h"
#include "matroska/reader/Losses.h"
#include "matroska/reader/Values.h"

namespace MatroskaExtReader {

class CMatroskaFile;

// ---- EBML header
// -------------------------------------------------------------------------------------------------

class EBML {
  public:
    Result Parse(CMatroskaNode* node);

    CUInt EBMLVersion;
    CUInt EBMLReadVersion;
    CUInt EBMLMaxIDLength;
    CUInt EBMLMaxSizeLength;
    CANSI DocType;
    CUInt DocTypeVersion;
    CUInt DocTypeReadVersion;
};

// ---- SeekHead
// ----------------------------------------------------------------------------------------------------

class SeekHead : public android::RefBase {
  public:
    Result Parse(CMatroskaNode* node);

    CID SeekID;
    CUInt SeekPosition;  // bytes from the Segment's data start
};

class Seek : public android::RefBase {
  public:
    Result Parse(CMatroskaNode* node);

    CNode<SeekHead> Entries;
};

// ---- Info
// --------------------------------------------------------------------------------------------------------

class Info {
  public:
    Result Parse(CMatroskaNode* node);

    ByteBuffer SegmentUID;
    ByteBuffer PrevUID;
    ByteBuffer NextUID;
    CUTF8 SegmentFilename;
    CUTF8 PrevFilename;
    CUTF8 NextFilename;
    CUInt TimecodeScale{1000000};  // nanoseconds per timecode unit
    CFloat Duration;               // timecode units
    CInt DateUTC;                  // nanoseconds since 2001-01-01
    CUTF8 Title;
    CUTF8 MuxingApp;
    CUTF8 WritingApp;
};

// ---- ContentEncodings
// --------------------------------------------------------------------------------------------

namespace encoding {
constexpr uint64_t kScopeFrames = 1, kScopePrivate = 2;
constexpr uint64_t kTypeCompression = 0, kTypeEncryption = 1;
constexpr uint64_t kAlgoZlib = 0, kAlgoHeaderStripping = 3;
}  // namespace encoding

class ContentCompression {
  public:
    Result Parse(CMatroskaNode* node);

    CUInt ContentCompAlgo{encoding::kAlgoZlib};
    ByteBuffer ContentCompSettings;  // for header stripping, the bytes taken off each frame
};

// Kept as it is read and never used: encrypted content is delivered as stored.
class ContentEncryption {
  public:
    Result Parse(CMatroskaNode* node);

    CUInt ContentEncAlgo{0};
    ByteBuffer ContentEncKeyID;
    ByteBuffer ContentSignature;
    ByteBuffer ContentSigKeyID;
    CUInt ContentSigAlgo{0};
    CUInt ContentSigHashAlgo{0};
};

class ContentEncoding : public android::RefBase {
  public:
    Result Parse(CMatroskaNode* node);
    bool IsZlib() const;
    bool IsHeaderStripping() const;
    // One of the two that are undone on frames; any other leaves them as they are stored.
    bool IsSupported() const { return IsZlib() || IsHeaderStripping(); }

    CUInt ContentEncodingOrder{0};
    CUInt ContentEncodingScope{encoding::kScopeFrames};  // bit mask
    CUInt ContentEncodingType{encoding::kTypeCompression};
    ContentCompression Compression;
    ContentEncryption Encryption;
};

class ContentEncodings : public CNode<ContentEncoding> {
  public:
    Result Parse(CMatroskaNode* node);
};

// Ascending ContentEncodingOrder, by its low 32 bits.
int ContentEncodingCompare(const AutoPtr<ContentEncoding>* a, const AutoPtr<ContentEncoding>* b);

// ---- Tracks
// ------------------------------------------------------------------------------------------------------

class Video {
  public:
    Result Parse(CMatroskaNode* node);

    CUInt FlagInterlaced;
    CUInt StereoMode;
    CUInt PixelWidth;
    CUInt PixelHeight;
    CUInt DisplayWidth;
    CUInt DisplayHeight;
    CUInt DisplayUnit;
    CUInt AspectRatioType;
    CUInt ColourSpace;  // Deliberate: a four-character code read as a number
    CFloat GammaValue;
    CFloat FrameRate;
};

class Audio {
  public:
    Result Parse(CMatroskaNode* node);

    CFloat SamplingFrequency{8000.0};  // Hz
    CFloat OutputSamplingFrequency;
    CUInt Channels{1};
    ByteBuffer ChannelPositions;
    CUInt BitDepth;
};

// TrackType values (RFC 9559, section 5.1.4.1.3) that this system treats apart.
constexpr uint64_t kTrackTypeVideo = 1, kTrackTypeAudio = 2, kTrackTypeSubtitle = 17;

enum SubtitleKind {
    kSubtitleNone = 0,
    kSubtitleUtf8 = 1,
    kSubtitleAss = 2,
    kSubtitleAss2 = 3,
    kSubtitleVobSub = 4,
    kSubtitleKate = 5,
    kSubtitleBmp = 6,
    kSubtitleUsf = 7
};

class TrackEntry : public android::RefBase {
  public:
    Result Parse(CMatroskaNode* node);

    // Derives the facts below from the elements; to be called once, when the entry has been parsed.
    void InitInfo();
    // Undoes, in place, the encodings whose scope has a bit in common with `scope`. 1: all that match were
    // undone; 0: it stopped (encryption, an unsupported or corrupt compression, or after putting a stripped
    // header back). No step makes more than `limit` bytes.
    int Expand(ByteBuffer& data, uint64_t scope, Inflater& inflater, uint32_t limit) const;
    // The frames have to be read whole before they can be delivered.
    bool IsDecoded() const { return IsZlibCompressed || IsRealMedia || IsVorbis; }

    CUInt TrackNumber;
    CUInt TrackUID;
    CUInt TrackType;
    CUInt FlagEnabled{1};
    CUInt FlagDefault{1};
    CUInt FlagLacing{1};
    CUInt MinCache;
    CUInt MaxCache;
    CUTF8 Name;
    CANSI Language;
    ByteBuffer CodecID;  // Deliberate: raw bytes, not a string
    ByteBuffer CodecPrivate;
    CUTF8 CodecName;
    CUTF8 CodecSettings;
    CANSI CodecInfoURL;
    CANSI CodecDownloadURL;
    CUInt CodecDecodeAll;
    CUInt TrackOverlay;
    CUInt DefaultDuration;  // nanoseconds a frame
    CFloat TrackTimecodeScale;

    static constexpr uint32_t kHasVideo = 1, kHasAudio = 2;
    static constexpr uint32_t kLacksPrivate = 4;  // there was no memory for it
    uint32_t ParsedParts = 0;                     // kHasVideo, kHasAudio, kLacksPrivate
    MatroskaExtReader::Video Video;
    MatroskaExtReader::Audio Audio;
    MatroskaExtReader::ContentEncodings Encodings;

    // Facts that InitInfo derives.
    uint32_t FourCC = 0;  // four characters, the first in the lowest byte, or a wave format tag
    enum class TagOrigin { kNothing, kCodecId, kCodecPrivate };
    TagOrigin FourCCFrom = TagOrigin::kNothing;
    uint32_t MissesRecordOf = 0;  // bytes that the codec's record takes, where CodecPrivate has fewer; else 0
    uint32_t BitCount = 0;        // bits a sample (audio) or a pixel
    uint32_t AvgBytesPerSec = 0;  // from a wave-format header
    bool IsRealMedia = false;
    bool IsVorbis = false;  // laced frames are delivered one a read
    int32_t SubtitleType = kSubtitleNone;
    bool IsZlibCompressed = false;
    uint32_t StrippedHeaderBytes = 0;

    bool HasBlock = false;  // one was met, see CMatroskaFile::NoteBlockOf
    uint64_t Position = 0;  // of the element's header, for reports
};

class Track : public android::RefBase {
  public:
    Result Parse(CMatroskaNode* node);

    CNode<TrackEntry> Entries;
};

// ---- Cues
// --------------------------------------------------------------------------------------------------------

// A Cues element may hold hundreds of thousands of points, so they are kept flat and small, all in file
// order: a point names a range of positions. What hardly any file has stands aside, with the place in
// `Positions` of the one that it belongs to.

struct CueReference {
    uint64_t CueRefTime = 0;
    uint64_t CueRefCluster = 0;
    uint64_t CueRefNumber = 0;
    uint64_t CueRefCodecState = 0;
    uint32_t Position = 0;
};

// Kept where one of the two is not 0.
struct CueBlock {
    uint64_t CueBlockNumber = 0;
    uint64_t CueCodecState = 0;
    uint32_t Position = 0;
};

struct CueTrackPosition {
    uint64_t CueTrack = 0;
    uint64_t CueClusterPosition = 0;  // bytes from the Segment's data start
};

struct CuePoint {
    uint64_t CueTime = 0;  // timecode units
    uint32_t FirstPosition = 0;
    uint32_t PositionCount = 0;
};

class Cue : public android::RefBase {
  public:
    Result Parse(CMatroskaNode* node);

    // Appends a point, whose positions are appended already. False where memory is refused.
    bool AddPoint(const CuePoint& point) {
        const bool isFirst = Points.empty();
        const uint64_t last = isFirst ? 0 : Points.back().CueTime;
        if (!Points.Append(point)) return false;
        mIsOrdered = mIsOrdered && last <= point.CueTime;
        mIsIndex = mIsIndex && (isFirst || last < point.CueTime) && point.PositionCount != 0;
        return true;
    }
    // The same with one position, as the scan of a file without Cues makes them.
    bool AddPoint(uint64_t time, uint64_t track, uint64_t clusterPosition);
    const CueTrackPosition* PositionsOf(const CuePoint& point) const {
        return Positions.data() + point.FirstPosition;
    }

    Array<CuePoint> Points;
    Array<CueTrackPosition> Positions;
    Array<CueBlock> Blocks;
    Array<CueReference> References;
    bool IsSynthesised = false;  // made by a scan of the Clusters

    // The points' times, in timecode units, never descend.
    bool IsOrdered() const { return mIsOrdered; }
    // They ascend, and each point names a place: an index as it stands.
    bool IsIndex() const { return mIsIndex; }

  private:
    void ParsePoint(CMatroskaNode* node);
    void ParsePosition(CMatroskaNode* node);
    void ParseReference(CMatroskaNode* node);
    void PassPlainPoints(CMatroskaNode* child, uint64_t end);

    bool mIsOrdered = true;
    bool mIsIndex = true;
};

// ---- Chapters
// ----------------------------------------------------------------------------------------------------

class ChapterDisplay : public android::RefBase {
  public:
    Result Parse(CMatroskaNode* node);

    CUTF8 ChapString;
    CANSI ChapLanguage;
    CANSI ChapCountry;
};

class ChapterAtom : public android::RefBase {
  public:
    ChapterAtom();
    Result Parse(CMatroskaNode* node);
    // This atom or the first of its nested atoms, depth first, with `uid`; null when there is none.
    ChapterAtom* FindChapterAtom(uint64_t uid);

    CUInt ChapterUID;        // random until read
    CUInt ChapterTimeStart;  // nanoseconds
    CUInt ChapterTimeEnd;
    CUInt ChapterFlagHidden{0};
    CUInt ChapterFlagEnabled{1};
    CNode<ChapterDisplay> Displays;
    CNode<ChapterAtom> Atoms;
};

class EditionEntry : public ChapterAtom {
  public:
    Result Parse(CMatroskaNode* node);
};

class Chapter : public android::RefBase {
  public:
    Result Parse(CMatroskaNode* node);

    CNode<EditionEntry> Editions;
};

// ---- Attachments
// -------------------------------------------------------------------------------------------------

class AttachedFile : public android::RefBase {
  public:
    Result Parse(CMatroskaNode* node);

    CUTF8 FileDescription;
    CUTF8 FileName;
    CANSI FileMimeType;
    uint64_t DataPosition = 0;  // FileData is never read: where it is and how much
    uint64_t DataSize = 0;
    CUInt FileUID;
};

class Attachment : public android::RefBase {
  public:
    Result Parse(CMatroskaNode* node);

    CNode<AttachedFile> Files;
};

// ---- Blocks
// ------------------------------------------------------------------------------------------------------

// The fixed part at the start of a block (RFC 9559, section 10.1).
struct BlockHeader {
    uint64_t trackNumber;
    uint64_t dataPosition;  // first byte behind the flags
    uint64_t dataSize;      // bytes from there to the block's own end
    int16_t timeCode;       // timecode units relative to the Cluster's
    uint8_t flags;

    uint32_t Lacing() const { return (flags >> 1) & 3u; }
    // The whole block lies within what the source can deliver and its size fits the interfaces.
    bool IsDeliverable(const CMatroskaFile& file) const;
};

constexpr uint8_t kKeyFrameFlag = 0x80;  // of a SimpleBlock

// The header of a block whose track number has one byte, in the `kShortBlockHeader` bytes from `position` on.
// False for any other number.
constexpr uint32_t kShortBlockHeader = 4;
inline bool TakeShortHeader(const uint8_t* bytes, uint64_t position, uint64_t end, BlockHeader* header) {
    const uint64_t data = position + kShortBlockHeader;
    *header = BlockHeader{bytes[0] & 0x7Fu, data, end > data ? end - data : 0,
                          static_cast<int16_t>(bytes[1] << 8 | bytes[2]), bytes[3]};
    return bytes[0] > 0x80 && bytes[0] < 0xFF;
}

// Reads the header of the block whose element begins its data at `position` and ends at `end`.
BlockHeader ReadBlockHeader(CMatroskaFile& file, uint64_t position, uint64_t end);

// One block: the SimpleBlock element, or the Block element of a BlockGroup (RFC 9559, section 10). Parse
// reads the header only; GetSize must come before Read for the same block and track. `node` is any node of
// the file.
class SimpleBlock {
  public:
    SimpleBlock() : DataPosition(0), FramesPosition(0), DataSize(0), mIsRefused(false) {}

    Result Parse(CMatroskaNode* node);
    void SetHeader(const BlockHeader& header) {
        TrackNumber.Set(header.trackNumber);
        TimeCode.Set(header.timeCode);
        Flags.Set(header.flags);
        DataPosition = header.dataPosition;
        DataSize = header.dataSize;
    }
    BlockHeader Header() const {
        return {TrackNumber.Get(), DataPosition, DataSize, static_cast<int16_t>(TimeCode.Get()), Flags.Get()};
    }
    // Decodes the lacing header into FrameSizes, and unless `sizesOnly` reads and expands every frame. A
    // failure means that a lace does not fit the block or cannot be read: Read then refuses the block as a
    // whole.
    Result ParseData(CMatroskaNode* node, const TrackEntry* track, bool sizesOnly);
    // Bytes to allocate before Read; 0 for a block that Read will refuse. `track` may be null.
    uint32_t GetSize(CMatroskaNode* node, const TrackEntry* track);
    // Writes the block's bytes (for a Vorbis track its next frame) to `out`. `len` is the room there on
    // entry, the bytes written on return. `timeBase` goes into RealMedia record headers only.
    Result Read(CMatroskaNode* node, const TrackEntry* track, uint8_t* out, long& len, uint32_t timeBase);

    // Gives up the frame that Read would take next from those that were read whole.
    void DropFrame() {
        if (!DecodedFrames.empty()) DecodedFrames.PopFront();
    }

    // GetSize or ParseData found that the block cannot be delivered.
    bool IsRefused() const { return mIsRefused; }
    bool IsKeyFrameFlagged() const { return (Flags.Get() & kKeyFrameFlag) != 0; }
    uint32_t Lacing() const { return (Flags.Get() >> 1) & 3; }
    // Makes the object as new for a block that begins with `header`, keeping its allocations.
    void Restart(const BlockHeader& header) {
        SetHeader(header);
        FramesPosition = 0;
        if (!DecodedFrames.empty()) DecodedFrames.clear();
        if (!FrameSizes.empty()) FrameSizes.clear();
        mIsRefused = false;
    }

    CLength TrackNumber;
    CInt TimeCode;  // timecode units relative to the Cluster's
    CByte Flags;
    uint64_t DataPosition;    // first byte behind the flags
    uint64_t FramesPosition;  // first byte of the first frame; known after ParseData
    uint64_t DataSize;        // bytes from DataPosition to the block's own end, lacing header included
    Array<AutoPtr<CBinary>> DecodedFrames;
    Array<uint64_t> FrameSizes;

  private:
    Result ReadDecoded(CMatroskaNode* node, const TrackEntry& track, uint8_t* out, long& len,
                       uint32_t timeBase);
    Result ReadRestoringHeaders(CMatroskaNode* node, const TrackEntry& track, uint8_t* out, long& len);
    Result ReadPlain(CMatroskaNode* node, uint8_t* out, long& len);
    Result ReadFrames(CMatroskaNode* node, const TrackEntry& track, size_t firstSize);
    Result Refuse(CMatroskaNode* node, LossKind kind);
    uint32_t MostRestoredBytes(const CMatroskaFile& file) const;
    uint64_t DecodedSize(const TrackEntry& track) const;
    uint64_t RestoredSize(const TrackEntry& track) const;

    bool mIsRefused;  // ParseData failed
};

class CSimpleBlockNode : public CNode<Shared<SimpleBlock>> {};

class TimeSlice : public android::RefBase {
  public:
    Result Parse(CMatroskaNode* node);

    CUInt LaceNumber;
    CUInt FrameNumber;
    CUInt Delay;
    CUInt SliceDuration;
};

class BlockMore : public android::RefBase {
  public:
    Result Parse(CMatroskaNode* node);

    CInt BlockAddID{1};
    ByteBuffer BlockAdditional;
};

// Not read as part of a BlockGroup.
class BlockAdditions : public CNode<BlockMore> {
  public:
    Result Parse(CMatroskaNode* node);
};

class BlockGroup {
  public:
    Result Parse(CMatroskaNode* node);
    bool IsKeyFrame() const { return !ReferenceBlock.IsSet(); }
    // Makes the object as new, keeping its allocations.
    void Reset() { Restart(BlockHeader{}); }
    // The same for a group whose block begins with `header`.
    void Restart(const BlockHeader& header) {
        Block.Restart(header);
        BlockDuration = CUInt();
        ReferenceBlock = CInt();
        if (ReferencePriority.IsSet()) ReferencePriority = CUInt();
        if (ReferenceVirtual.IsSet()) ReferenceVirtual = CInt();
        if (!CodecState.empty()) CodecState.Clear();
        if (!TimeSlices.isEmpty()) TimeSlices.clear();
    }

    SimpleBlock Block;
    CUInt BlockDuration;  // timecode units
    CUInt ReferencePriority;
    CInt ReferenceBlock;  // the last one read; set means that the frame is no key frame
    CInt ReferenceVirtual;
    ByteBuffer CodecState;
    CNode<TimeSlice> TimeSlices;
};

class CBlockGroupNode : public CNode<Shared<BlockGroup>> {};

class Cluster : public android::RefBase {
  public:
    Result Parse(CMatroskaNode* node);
    // Reads only the first Timecode child; leaves the value alone when there is none.
    Result ParseTimeCode(CMatroskaNode* node);

    CUInt Timecode;  // timecode units
    CUInt Position;
    CUInt PrevSize;
    CBlockGroupNode BlockGroups;
    CSimpleBlockNode SimpleBlocks;
};

// ---- Segment
// -----------------------------------------------------------------------------------------------------

class Segment {
  public:
    // Every level-1 child, Clusters included.
    Result Parse(CMatroskaNode* node);
    // What opening a file needs: the head, and through the SeekHead what lies behind the Clusters.
    Result ParseMinimal(CMatroskaNode* node);

    uint64_t GetDuration() const;  // nanoseconds
    // The track whose blocks drive seeking, the index and subtitle collection.
    uint64_t GetMasterTrack() const;
    // The atom with `uid` in the edition of that number, counted over all Chapters; uid 0 is the edition
    // itself.
    ChapterAtom* FindChapterAtom(uint64_t uid, int edition) const;

    uint64_t DataStart = 0;  // file position of the first child
    uint64_t Size = 0;
    MatroskaExtReader::Info Info;
    CNode<Seek> SeekHeads;
    CNode<Cluster> Clusters;
    CNode<Track> Tracks;
    CNode<Cue> Cues;
    CNode<Attachment> Attachments;
    CNode<Chapter> Chapters;
    // All Clusters with their times, as cue points of no track, if ParseMinimal has passed every child of the
    // element without any trouble and met no Cues, for a source that gets an index; else null. They are
    // spared a second visit.
    AutoPtr<Cue> PassedClusters;

  private:
    struct Head;

    Result ParseSeekHead(CMatroskaNode* node);
    Result ParseCues(CMatroskaNode* node);
    bool ParseHeadElement(CMatroskaNode* child, Head* head);
    bool NeedsClusters(const CMatroskaFile* file) const;
    int ParseHead(CMatroskaNode* node);
    void FollowSeekHeads(CMatroskaNode* node);
    void ParseBehindClusters(CMatroskaNode* node);
    void ParseListedCues(CMatroskaNode* node);
};

}  // namespace MatroskaExtReader
