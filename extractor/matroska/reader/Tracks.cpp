// Tracks, TrackEntry with Video and Audio, and ContentEncodings.
#include "matroska/reader/MatroskaReader.h"
#include "matroska/reader/ParseChildren.h"

namespace MatroskaExtReader {

Result Track::Parse(CMatroskaNode* node) {
    static const ChildRow<Track> kRows[] = {
        {id::kTrackEntry,
         [](Track& track, CMatroskaNode* child) -> Result {
             return child->File()->Admit(Kept::kTrackEntry, child) ? track.Entries.Parse(child) : kFailure;
         }},
    };
    return ParseWhole(*this, node, kRows);
}

Result TrackEntry::Parse(CMatroskaNode* node) {
    static const ChildRow<TrackEntry> kRows[] = {
        {id::kTrackNumber, &TrackEntry::TrackNumber},
        {id::kTrackUid, &TrackEntry::TrackUID},
        {id::kTrackType, &TrackEntry::TrackType},
        {id::kFlagEnabled, &TrackEntry::FlagEnabled},
        {id::kFlagDefault, &TrackEntry::FlagDefault},
        {id::kFlagLacing, &TrackEntry::FlagLacing},
        {id::kMinCache, &TrackEntry::MinCache},
        {id::kMaxCache, &TrackEntry::MaxCache},
        {id::kName, &TrackEntry::Name},
        {id::kLanguage, &TrackEntry::Language},
        {id::kCodecId, &TrackEntry::CodecID},
        {id::kCodecPrivate,
         [](TrackEntry& entry, CMatroskaNode* child) {
             const Result result = entry.CodecPrivate.Parse(child);
             if (result == kOutOfMemory) entry.ParsedParts |= kLacksPrivate;
             return result;
         }},
        {id::kCodecName, &TrackEntry::CodecName},
        {id::kCodecSettings, &TrackEntry::CodecSettings},
        {id::kCodecInfoUrl, &TrackEntry::CodecInfoURL},
        {id::kCodecDownloadUrl, &TrackEntry::CodecDownloadURL},
        {id::kCodecDecodeAll, &TrackEntry::CodecDecodeAll},
        {id::kTrackOverlay, &TrackEntry::TrackOverlay},
        {id::kDefaultDuration, &TrackEntry::DefaultDuration},
        // Deliberate: the ID of Video's FrameRate, met right inside a TrackEntry, is a DefaultDuration.
        {id::kFrameRate, &TrackEntry::DefaultDuration},
        {id::kTrackTimecodeScale, &TrackEntry::TrackTimecodeScale},
        {id::kContentEncodings,
         [](TrackEntry& entry, CMatroskaNode* child) { return entry.Encodings.Parse(child); }},
        {id::kVideo,
         [](TrackEntry& entry, CMatroskaNode* child) {
             const Result result = entry.Video.Parse(child);
             if (!Failed(result)) entry.ParsedParts |= kHasVideo;
             return result;
         }},
        {id::kAudio,
         [](TrackEntry& entry, CMatroskaNode* child) {
             const Result result = entry.Audio.Parse(child);
             if (!Failed(result)) entry.ParsedParts |= kHasAudio;
             return result;
         }},
    };
    if (node != nullptr) Position = node->HeaderStart();
    const Result result = ParseChildren(*this, node, kRows);
    // What is asserted of Vorbis headers is meant for those in the file.
    const bool isUseless = (ParsedParts & kLacksPrivate) != 0 && CodecID.StartsWith("A_VORBIS");
    return isUseless ? kOutOfMemory : result;
}

Result Video::Parse(CMatroskaNode* node) {
    static const ChildRow<MatroskaExtReader::Video> kRows[] = {
        {id::kFlagInterlaced, &Video::FlagInterlaced}, {id::kStereoMode, &Video::StereoMode},
        {id::kPixelWidth, &Video::PixelWidth},         {id::kPixelHeight, &Video::PixelHeight},
        {id::kDisplayWidth, &Video::DisplayWidth},     {id::kDisplayHeight, &Video::DisplayHeight},
        {id::kDisplayUnit, &Video::DisplayUnit},       {id::kAspectRatioType, &Video::AspectRatioType},
        {id::kColourSpace, &Video::ColourSpace},       {id::kGammaValue, &Video::GammaValue},
        {id::kFrameRate, &Video::FrameRate},
    };
    return ParseChildren(*this, node, kRows);
}

Result Audio::Parse(CMatroskaNode* node) {
    static const ChildRow<MatroskaExtReader::Audio> kRows[] = {
        {id::kSamplingFrequency, &Audio::SamplingFrequency},
        {id::kOutputSamplingFrequency, &Audio::OutputSamplingFrequency},
        {id::kChannels, &Audio::Channels},
        {id::kChannelPositions, &Audio::ChannelPositions},
        {id::kBitDepth, &Audio::BitDepth},
    };
    return ParseChildren(*this, node, kRows);
}

Result ContentEncodings::Parse(CMatroskaNode* node) {
    static const ChildRow<ContentEncodings> kRows[] = {
        {id::kContentEncoding,
         [](ContentEncodings& list, CMatroskaNode* child) -> Result {
             return child->File()->Admit(Kept::kContentEncoding, child)
                        ? list.CNode<ContentEncoding>::Parse(child)
                        : kFailure;
         }},
    };
    return ParseChildren(*this, node, kRows);
}

Result ContentEncoding::Parse(CMatroskaNode* node) {
    static const ChildRow<ContentEncoding> kRows[] = {
        {id::kContentEncodingOrder, &ContentEncoding::ContentEncodingOrder},
        {id::kContentEncodingScope, &ContentEncoding::ContentEncodingScope},
        {id::kContentEncodingType, &ContentEncoding::ContentEncodingType},
        {id::kContentCompression,
         [](ContentEncoding& encoding, CMatroskaNode* child) { return encoding.Compression.Parse(child); }},
        {id::kContentEncryption,
         [](ContentEncoding& encoding, CMatroskaNode* child) { return encoding.Encryption.Parse(child); }},
    };
    return ParseChildren(*this, node, kRows);
}

Result ContentCompression::Parse(CMatroskaNode* node) {
    static const ChildRow<ContentCompression> kRows[] = {
        {id::kContentCompAlgo, &ContentCompression::ContentCompAlgo},
        {id::kContentCompSettings, &ContentCompression::ContentCompSettings},
    };
    return ParseChildren(*this, node, kRows);
}

Result ContentEncryption::Parse(CMatroskaNode* node) {
    static const ChildRow<ContentEncryption> kRows[] = {
        {id::kContentEncAlgo, &ContentEncryption::ContentEncAlgo},
        {id::kContentEncKeyId, &ContentEncryption::ContentEncKeyID},
        {id::kContentSignature, &ContentEncryption::ContentSignature},
        {id::kContentSigKeyId, &ContentEncryption::ContentSigKeyID},
        {id::kContentSigAlgo, &ContentEncryption::ContentSigAlgo},
        {id::kContentSigHashAlgo, &ContentEncryption::ContentSigHashAlgo},
    };
    return ParseChildren(*this, node, kRows);
}

}  // namespace MatroskaExtReader
