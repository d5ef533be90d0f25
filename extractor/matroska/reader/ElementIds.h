// Element IDs of EBML (RFC 8794) and Matroska (RFC 9559), marker bits included, and one table that gives each
// its name, type and parent. The parser dispatches on the constants; tools and documents read the table.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace MatroskaExtReader {

namespace id {

constexpr uint32_t kEbml = 0x1A45DFA3, kEbmlVersion = 0x4286, kEbmlReadVersion = 0x42F7;
constexpr uint32_t kEbmlMaxIdLength = 0x42F2, kEbmlMaxSizeLength = 0x42F3;
constexpr uint32_t kDocType = 0x4282, kDocTypeVersion = 0x4287, kDocTypeReadVersion = 0x4285;
constexpr uint32_t kVoid = 0xEC, kCrc32 = 0xBF;

constexpr uint32_t kSegment = 0x18538067;

constexpr uint32_t kSeekHead = 0x114D9B74, kSeek = 0x4DBB, kSeekId = 0x53AB, kSeekPosition = 0x53AC;

constexpr uint32_t kInfo = 0x1549A966, kSegmentUid = 0x73A4, kPrevUid = 0x3CB923, kNextUid = 0x3EB923;
constexpr uint32_t kSegmentFilename = 0x7384, kPrevFilename = 0x3C83AB, kNextFilename = 0x3E83BB;
constexpr uint32_t kTimecodeScale = 0x2AD7B1, kDuration = 0x4489, kDateUtc = 0x4461, kTitle = 0x7BA9;
constexpr uint32_t kMuxingApp = 0x4D80, kWritingApp = 0x5741;

constexpr uint32_t kTracks = 0x1654AE6B, kTrackEntry = 0xAE, kTrackNumber = 0xD7, kTrackUid = 0x73C5;
constexpr uint32_t kTrackType = 0x83, kFlagEnabled = 0xB9, kFlagDefault = 0x88, kFlagLacing = 0x9C;
constexpr uint32_t kMinCache = 0x6DE7, kMaxCache = 0x6DF8, kName = 0x536E, kLanguage = 0x22B59C;
constexpr uint32_t kCodecId = 0x86, kCodecPrivate = 0x63A2, kCodecName = 0x258688, kCodecSettings = 0x3A9697;
constexpr uint32_t kCodecInfoUrl = 0x3B4040, kCodecDownloadUrl = 0x26B240, kCodecDecodeAll = 0xAA;
constexpr uint32_t kTrackOverlay = 0x6FAB, kDefaultDuration = 0x23E383, kTrackTimecodeScale = 0x23314F;

constexpr uint32_t kVideo = 0xE0, kFlagInterlaced = 0x9A, kStereoMode = 0x53B8, kPixelWidth = 0xB0;
constexpr uint32_t kPixelHeight = 0xBA, kDisplayWidth = 0x54B0, kDisplayHeight = 0x54BA,
                   kDisplayUnit = 0x54B2;
constexpr uint32_t kAspectRatioType = 0x54B3, kColourSpace = 0x2EB524, kGammaValue = 0x2FB523;
constexpr uint32_t kFrameRate = 0x2383E3;

constexpr uint32_t kAudio = 0xE1, kSamplingFrequency = 0xB5, kOutputSamplingFrequency = 0x78B5;
constexpr uint32_t kChannels = 0x9F, kChannelPositions = 0x7D7B, kBitDepth = 0x6264;

constexpr uint32_t kContentEncodings = 0x6D80, kContentEncoding = 0x6240, kContentEncodingOrder = 0x5031;
constexpr uint32_t kContentEncodingScope = 0x5032, kContentEncodingType = 0x5033;
constexpr uint32_t kContentCompression = 0x5034, kContentCompAlgo = 0x4254, kContentCompSettings = 0x4255;
constexpr uint32_t kContentEncryption = 0x5035, kContentEncAlgo = 0x47E1, kContentEncKeyId = 0x47E2;
constexpr uint32_t kContentSignature = 0x47E3, kContentSigKeyId = 0x47E4, kContentSigAlgo = 0x47E5;
constexpr uint32_t kContentSigHashAlgo = 0x47E6;

constexpr uint32_t kCues = 0x1C53BB6B, kCuePoint = 0xBB, kCueTime = 0xB3, kCueTrackPositions = 0xB7;
constexpr uint32_t kCueTrack = 0xF7, kCueClusterPosition = 0xF1, kCueBlockNumber = 0x5387,
                   kCueCodecState = 0xEA;
constexpr uint32_t kCueReference = 0xDB, kCueRefTime = 0x96, kCueRefCluster = 0x97, kCueRefNumber = 0x535F;
constexpr uint32_t kCueRefCodecState = 0xEB;

constexpr uint32_t kChapters = 0x1043A770, kEditionEntry = 0x45B9, kChapterAtom = 0xB6, kChapterUid = 0x73C4;
constexpr uint32_t kChapterTimeStart = 0x91, kChapterTimeEnd = 0x92, kChapterFlagHidden = 0x98;
constexpr uint32_t kChapterFlagEnabled = 0x4598, kChapterDisplay = 0x80, kChapString = 0x85;
constexpr uint32_t kChapLanguage = 0x437C, kChapCountry = 0x437E;

constexpr uint32_t kAttachments = 0x1941A469, kAttachedFile = 0x61A7, kFileDescription = 0x467E;
constexpr uint32_t kFileName = 0x466E, kFileMimeType = 0x4660, kFileData = 0x465C, kFileUid = 0x46AE;

constexpr uint32_t kTags = 0x1254C367;

constexpr uint32_t kCluster = 0x1F43B675, kClusterTimecode = 0xE7, kClusterPosition = 0xA7;
constexpr uint32_t kClusterPrevSize = 0xAB, kSimpleBlock = 0xA3, kBlockGroup = 0xA0, kBlock = 0xA1;
constexpr uint32_t kBlockDuration = 0x9B, kReferencePriority = 0xFA, kReferenceBlock = 0xFB;
constexpr uint32_t kReferenceVirtual = 0xFD, kCodecState = 0xA4, kTimeSlice = 0xE8, kLaceNumber = 0xCC;
constexpr uint32_t kFrameNumber = 0xCD, kDelay = 0xCE, kSliceDuration = 0xCF;
constexpr uint32_t kBlockAdditions = 0x75A1, kBlockMore = 0xA6, kBlockAddId = 0xEE, kBlockAdditional = 0xA5;
constexpr uint32_t kDiscardPadding = 0x75A2;

}  // namespace id

enum class ElementType { kMaster, kUint, kInt, kFloat, kAnsi, kUtf8, kBinary, kDate, kId };

struct ElementInfo {
    uint32_t id;
    const char* name;  // as RFC 8794 and RFC 9559 spell it; the model has the older names of some
    ElementType type;
    uint32_t parent;      // ID of the enclosing master; 0 at the top level or where it may stand anywhere
    const char* section;  // where the element is defined
};

// Null when the ID is in no table. Where one ID stands under several parents the first row is given.
const ElementInfo* FindElementInfo(uint32_t id);
const ElementInfo* ElementTable(size_t* count);

// True for the direct children of a Segment: such an ID ends a Cluster of unknown size, and is what a damaged
// Segment is searched for.
constexpr bool IsBlockElement(uint32_t id) {
    return id == id::kBlockGroup || id == id::kSimpleBlock;
}

constexpr bool IsLevelOne(uint32_t id) {
    return id == id::kSeekHead || id == id::kTags || id == id::kChapters || id == id::kInfo ||
           id == id::kTracks || id == id::kAttachments || id == id::kCues || id == id::kCluster;
}

}  // namespace MatroskaExtReader
