#include "support/ModelState.h"

#include <sstream>

#include "support/EbmlWriter.h"

namespace testing_support {

namespace reader = MatroskaExtReader;

namespace {

using reader::AutoPtr;

std::string Text(const reader::TextValue& value) {
    return std::string(value.c_str(), value.size());
}

void Add(std::ostream& out, const reader::ChapterAtom& atom) {
    out << " (" << atom.ChapterTimeStart.Get() << "-" << atom.ChapterTimeEnd.Get();
    for (const AutoPtr<reader::ChapterDisplay>& display : atom.Displays) out << Text(display->ChapString);
    for (const AutoPtr<reader::ChapterAtom>& inner : atom.Atoms) Add(out, *inner);
    out << ")";
}

void Add(std::ostream& out, const reader::TrackEntry& entry) {
    out << "\ntrack " << entry.TrackNumber.Get() << " " << entry.TrackUID.Get() << " "
        << entry.TrackType.Get() << " " << Text(entry.Name) << Text(entry.Language)
        << entry.DefaultDuration.Get() << " " << entry.TrackTimecodeScale.Get() << " " << entry.ParsedParts
        << " " << entry.Video.PixelWidth.Get() << " " << entry.Audio.SamplingFrequency.Get() << " "
        << entry.Encodings.size() << " " << entry.FourCC << " " << entry.StrippedHeaderBytes << " "
        << ToHex(entry.CodecID.data(), entry.CodecID.size()) << " "
        << ToHex(entry.CodecPrivate.data(), entry.CodecPrivate.size());
}

void Add(std::ostream& out, const reader::Cue& cue) {
    out << "\ncues " << cue.IsSynthesised << cue.IsOrdered();
    for (const reader::CuePoint& point : cue.Points) {
        out << "\n" << point.CueTime << ":" << point.FirstPosition << "+" << point.PositionCount;
    }
    for (const reader::CueTrackPosition& position : cue.Positions) {
        out << "\n" << position.CueTrack << " " << position.CueClusterPosition;
    }
    for (const reader::CueBlock& block : cue.Blocks) {
        out << "\n" << block.Position << ": " << block.CueBlockNumber << " " << block.CueCodecState;
    }
    for (const reader::CueReference& reference : cue.References) {
        out << "\n"
            << reference.Position << ": " << reference.CueRefTime << " " << reference.CueRefCluster << " "
            << reference.CueRefNumber << " " << reference.CueRefCodecState;
    }
}

void Add(std::ostream& out, const reader::Segment& segment) {
    const reader::Info& info = segment.Info;
    out << "\nsegment " << segment.DataStart << "+" << segment.Size << " " << info.TimecodeScale.Get() << " "
        << info.Duration.Get() << " " << info.DateUTC.Get() << " " << info.SegmentUID.size()
        << Text(info.Title) << Text(info.MuxingApp) << Text(info.WritingApp) << Text(info.SegmentFilename);
    for (const AutoPtr<reader::Seek>& list : segment.SeekHeads)
        for (const AutoPtr<reader::SeekHead>& entry : list->Entries)
            out << "\nseek " << entry->SeekID.Get() << " " << entry->SeekPosition.Get();
    for (const AutoPtr<reader::Track>& tracks : segment.Tracks)
        for (const AutoPtr<reader::TrackEntry>& entry : tracks->Entries) Add(out, *entry);
    for (const AutoPtr<reader::Cue>& cue : segment.Cues) Add(out, *cue);
    for (const AutoPtr<reader::Chapter>& chapters : segment.Chapters)
        for (const AutoPtr<reader::EditionEntry>& edition : chapters->Editions) Add(out, *edition);
    for (const AutoPtr<reader::Attachment>& files : segment.Attachments)
        for (const AutoPtr<reader::AttachedFile>& file : files->Files)
            out << "\nfile " << Text(file->FileName) << " " << file->DataPosition << "+" << file->DataSize;
}

}  // namespace

void OpenWithIndex(reader::CMatroskaFile* file) {
    const reader::CMatroskaFile::Opening opening(file);
    (void)file->Init();
    if (file->SegmentNode() != nullptr && file->Segment.Cues.empty()) file->RebuildIndex();
    (void)file->BuildIndexForSync();
}

std::string ModelState(const reader::CMatroskaFile& file) {
    std::ostringstream out;
    out << file.Reads() << " reads, " << file.FailedReads() << " failed, at " << file.Position()
        << ", master " << file.MasterTrack() << ", " << Text(file.Header.DocType)
        << file.Header.DocTypeReadVersion.Get();
    for (const reader::Loss& loss : file.Losses.List())
        out << "\n" << reader::TextOf(loss.kind).identifier << " at " << loss.position << "+" << loss.size;
    Add(out, file.Segment);
    for (size_t i = 0; i < file.Index().size(); ++i)
        out << "\nindex " << file.Index()[i].Time << " " << file.Index()[i].Position;
    return out.str();
}

std::string StateOf(const android::sp<android::DataSource>& source, bool takesPieces) {
    reader::CMatroskaFile file(source, takesPieces);
    OpenWithIndex(&file);
    return ModelState(file);
}

}  // namespace testing_support
