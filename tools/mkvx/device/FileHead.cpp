#include "device/FileHead.h"

#include <media/stagefright/MetaData.h>
#include <algorithm>

#include "base/Log.h"
#include "device/DropReasons.h"
#include "device/ElementTable.h"
#include "matroska/reader/MatroskaReader.h"

namespace mkvx {
namespace {

using android::sp;
using MatroskaExtReader::CMatroskaFile;
using MatroskaExtReader::CMatroskaNode;
using MatroskaExtReader::ContentEncoding;
using MatroskaExtReader::Failed;
using MatroskaExtReader::TrackEntry;

// ---- evidence

std::vector<uint8_t> firstBytes(CMatroskaFile& file, uint64_t offset, uint64_t size) {
    file.SeekTo(offset);
    const uint64_t wanted = std::min({size, uint64_t{Evidence::kMostBytes}, file.LeftInFile()});
    std::vector<uint8_t> bytes(static_cast<size_t>(wanted));
    if (bytes.empty() || Failed(file.Read(bytes.data(), uint32_t(bytes.size())))) bytes.clear();
    return bytes;
}

Evidence describe(CMatroskaFile& file, const CMatroskaNode& node) {
    Evidence evidence;
    evidence.element = elementName(node.Id());
    evidence.offset = node.HeaderStart();
    evidence.dataOffset = node.DataStart();
    evidence.size = node.Size();
    evidence.bytes = firstBytes(file, node.DataStart(), node.Size());
    return evidence;
}

sp<CMatroskaNode> nodeAt(CMatroskaFile& file, uint64_t position) {
    const sp<CMatroskaNode> root = new CMatroskaNode(&file);
    file.SeekTo(position);
    return new CMatroskaNode(root.get());
}

sp<CMatroskaNode> lastChild(const CMatroskaNode& parent, uint32_t id) {
    const sp<CMatroskaNode> child = parent.Child(id, true);
    sp<CMatroskaNode> last;
    if (child == nullptr) return last;
    do {  // bounded: every step moves forward within the parent
        last = child->Copy();
    } while (child->Next(true));
    return last;
}

// ---- tracks

FrameEncoding describe(const ContentEncoding& stored) {
    namespace is = MatroskaExtReader::encoding;
    FrameEncoding encoding;
    encoding.coversFrames = (stored.ContentEncodingScope.Get() & is::kScopeFrames) != 0;
    encoding.coversPrivate = (stored.ContentEncodingScope.Get() & is::kScopePrivate) != 0;
    encoding.isEncryption = stored.ContentEncodingType.Get() == is::kTypeEncryption;
    encoding.isUndone = stored.IsSupported();
    encoding.isHeaderStripping = stored.IsHeaderStripping();
    encoding.algorithm = stored.Compression.ContentCompAlgo.Get();
    return encoding;
}

FileTrack::TagOrigin originOf(TrackEntry::TagOrigin origin) {
    switch (origin) {
        case TrackEntry::TagOrigin::kCodecId:
            return FileTrack::TagOrigin::kCodecId;
        case TrackEntry::TagOrigin::kCodecPrivate:
            return FileTrack::TagOrigin::kCodecPrivate;
        case TrackEntry::TagOrigin::kNothing:
            break;
    }
    return FileTrack::TagOrigin::kNothing;
}

void describeCodec(const TrackEntry& entry, FileTrack& track) {
    const auto* codec = reinterpret_cast<const char*>(entry.CodecID.data());
    if (codec != nullptr) track.codecId.assign(codec, entry.CodecID.TextLength());
    const auto& config = entry.CodecPrivate;
    if (!config.empty()) track.codecPrivate.assign(config.data(), config.data() + config.size());
    track.tag = entry.FourCC;
    track.tagFrom = originOf(entry.FourCCFrom);
    track.missesRecordOf = entry.MissesRecordOf;
    track.deliversLacesApart = entry.IsVorbis;
    for (const auto& encoding : entry.Encodings) track.encodings.push_back(describe(*encoding));
}

void describeFormat(const TrackEntry& entry, FileTrack& track) {
    track.pixelWidth = entry.Video.PixelWidth.Get();
    track.pixelHeight = entry.Video.PixelHeight.Get();
    track.hasAudioFormat = (entry.ParsedParts & TrackEntry::kHasAudio) != 0;
    track.samplingFrequency = entry.Audio.SamplingFrequency.Get();
    track.bitsPerSample = entry.Audio.BitDepth.Get();
    if (entry.TrackTimecodeScale.IsSet()) track.timeScale = entry.TrackTimecodeScale.Get();
}

TrackEntry* entryFor(const CMatroskaFile& file, uint64_t number) {
    return number <= UINT32_MAX ? file.FindTrack(uint32_t(number)) : nullptr;
}

FileTrack describe(const CMatroskaFile& file, const TrackEntry& entry) {
    FileTrack track;
    track.number = entry.TrackNumber.Get();
    track.type = entry.TrackType.Get();
    track.position = entry.Position;
    track.hasName = entry.Name.c_str()[0] != '\0';
    track.isFound = entryFor(file, track.number) == &entry;
    describeCodec(entry, track);
    describeFormat(entry, track);
    return track;
}

std::vector<const TrackEntry*> entriesOf(const CMatroskaFile& file) {
    std::vector<const TrackEntry*> entries;
    for (const auto& tracks : file.Segment.Tracks)
        for (const auto& entry : tracks->Entries) entries.push_back(entry.get());
    return entries;
}

Discovery discoverOne(CMatroskaFile& file, const TrackEntry& entry) {
    const android::DiscoveredTrack found = android::DiscoverTrack(&file, entry);
    Discovery discovery;
    discovery.dropped = dropReason(found.mDrop);
    const char* mime = "";
    if (!discovery.dropped) found.mMeta->findCString(android::kKeyMIMEType, &mime);
    discovery.mime = mime;
    return discovery;
}

DocumentFacts::Header headerOf(const CMatroskaFile& file) {
    switch (MatroskaExtReader::JudgeHeader(file.Header)) {
        case MatroskaExtReader::HeaderVerdict::kOtherDocType:
            return DocumentFacts::Header::kOtherDocType;
        case MatroskaExtReader::HeaderVerdict::kTooNew:
            return DocumentFacts::Header::kTooNew;
        case MatroskaExtReader::HeaderVerdict::kReadable:
            break;
    }
    return DocumentFacts::Header::kReadable;
}

}  // namespace

FileHead::FileHead(const sp<android::DataSource>& source)
    : mOwned(new CMatroskaFile(source)), mFile(*mOwned) {
    MuteLog mute;
    (void)mFile.Init();  // what it does not find is not told
}

FileHead::FileHead(CMatroskaFile& file) : mFile(file) {}

FileHead::~FileHead() {
    MuteLog mute;
    mOwned.reset();
}

DocumentFacts FileHead::document() const {
    DocumentFacts facts;
    facts.header = headerOf(mFile);
    facts.docType = mFile.Header.DocType.c_str();
    facts.readVersion = mFile.Header.DocTypeReadVersion.Get();
    if (mFile.SegmentNode() != nullptr) facts.segment = mFile.SegmentNode()->HeaderStart();
    facts.segmentData = mFile.Segment.DataStart;
    facts.title = mFile.Segment.Info.Title.c_str();
    facts.muxingApp = mFile.Segment.Info.MuxingApp.c_str();
    facts.writingApp = mFile.Segment.Info.WritingApp.c_str();
    return facts;
}

int64_t FileHead::durationUs() const {
    return int64_t(mFile.Segment.GetDuration() / 1000);
}

uint32_t FileHead::masterTrack() const {
    return mFile.MasterTrack();
}

std::vector<FileTrack> FileHead::tracks() const {
    std::vector<FileTrack> tracks;
    for (const TrackEntry* entry : entriesOf(mFile)) tracks.push_back(describe(mFile, *entry));
    return tracks;
}

size_t FileHead::trackCount() const {
    return mFile.GetTrackCnt();
}

std::optional<FileTrack> FileHead::findTrack(uint64_t number) const {
    const TrackEntry* entry = entryFor(mFile, number);
    return entry != nullptr ? std::optional<FileTrack>(describe(mFile, *entry)) : std::nullopt;
}

std::vector<Discovery> FileHead::discover(const std::vector<size_t>& places) const {
    MuteLog mute;
    const CMatroskaFile::Opening opening(&mFile);
    const std::vector<const TrackEntry*> entries = entriesOf(mFile);
    std::vector<Discovery> discoveries;
    discoveries.reserve(places.size());
    for (const size_t place : places) discoveries.push_back(discoverOne(mFile, *entries.at(place)));
    return discoveries;
}

uint64_t FileHead::lossCount(LossKind kind) const {
    return mFile.Losses.Count(kind);
}

std::vector<Loss> FileHead::losses() const {
    const auto& kept = mFile.Losses.List();
    return {kept.begin(), kept.end()};
}

Evidence FileHead::evidenceAt(uint64_t position) const {
    MuteLog mute;
    const sp<CMatroskaNode> node = nodeAt(mFile, position);
    return node->IsValid() ? describe(mFile, *node) : bytesAt(position, Evidence::kMostBytes);
}

Evidence FileHead::bytesAt(uint64_t offset, uint64_t size) const {
    Evidence evidence;
    evidence.offset = evidence.dataOffset = offset;
    evidence.size = size;
    evidence.bytes = firstBytes(mFile, offset, size);
    return evidence;
}

std::optional<Evidence> FileHead::evidenceBelow(uint64_t position,
                                                std::initializer_list<uint32_t> path) const {
    MuteLog mute;
    sp<CMatroskaNode> node = nodeAt(mFile, position);
    if (!node->IsValid()) return std::nullopt;
    for (const uint32_t id : path) {
        node = lastChild(*node, id);
        if (node == nullptr) return std::nullopt;
    }
    return describe(mFile, *node);
}

Evidence FileHead::evidenceBelowOr(uint64_t position, std::initializer_list<uint32_t> path) const {
    const std::optional<Evidence> below = evidenceBelow(position, path);
    return below ? *below : evidenceAt(position);
}

}  // namespace mkvx
