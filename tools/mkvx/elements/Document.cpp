#include "elements/Document.h"

#include "base/Failure.h"
#include "base/Log.h"
#include "matroska/reader/MatroskaReader.h"
#include "source/MatroskaSource.h"

namespace mkvx {
namespace {

using namespace MatroskaExtReader;

// The document as opening reads it. Where that has none of the wanted element, the Segment's children are
// looked through for it, which opening does not do.
class Document {
  public:
    Document(const std::string& path, const SourceOptions& options) : mFile(openMatroska(path, options)) {
        const CMatroskaFile::Opening opening(&mFile);
        if (Failed(mFile.Init()))
            throw FileFailure(path, "the plug-in reads no document from it (see mkvx tree)");
    }

    // False when the list was empty and could be filled by looking through the Segment.
    template <typename T>
    bool require(CNode<T>& list, uint32_t id) {
        if (!list.isEmpty()) return true;
        const android::sp<CMatroskaNode> node = mFile.SegmentNode()->Child(id, true);
        return node == nullptr || Failed(list.Parse(node.get()));
    }

    Segment& segment() { return mFile.Segment; }

  private:
    MuteLog mMute;
    CMatroskaFile mFile;
};

int64_t usOf(const CUInt& ns) {
    return int64_t(ns.Get() / 1000);
}

std::string textOf(const TextValue& text) {
    return text.c_str();  // to the first zero byte
}

// Recursion is as deep as the reader follows nested chapters.
ChapterInfo describe(const ChapterAtom& atom) {
    ChapterInfo info;
    info.startUs = usOf(atom.ChapterTimeStart);
    if (atom.ChapterTimeEnd.IsSet()) info.endUs = usOf(atom.ChapterTimeEnd);
    info.isHidden = atom.ChapterFlagHidden.Get() != 0;
    info.isEnabled = atom.ChapterFlagEnabled.Get() != 0;
    for (const AutoPtr<ChapterDisplay>& display : atom.Displays)
        info.titles.push_back(
            {textOf(display->ChapString), textOf(display->ChapLanguage), textOf(display->ChapCountry)});
    for (const AutoPtr<ChapterAtom>& nested : atom.Atoms) info.nested.push_back(describe(*nested));
    return info;
}

AttachmentInfo describe(const AttachedFile& file) {
    AttachmentInfo info;
    info.name = textOf(file.FileName);
    info.mime = textOf(file.FileMimeType);
    info.description = textOf(file.FileDescription);
    info.uid = file.FileUID.Get();
    info.offset = file.DataPosition;
    info.size = file.DataSize;
    return info;
}

}  // namespace

ChaptersReport readChapters(const std::string& path, const SourceOptions& options) {
    Document document(path, options);
    ChaptersReport report;
    report.file = path;
    CNode<Chapter>& chapters = document.segment().Chapters;
    report.isReached = document.require(chapters, id::kChapters);
    for (const AutoPtr<Chapter>& list : chapters) {
        for (const AutoPtr<EditionEntry>& edition : list->Editions)
            report.editions.push_back(describe(*edition).nested);
    }
    return report;
}

AttachmentsReport readAttachments(const std::string& path, const SourceOptions& options) {
    Document document(path, options);
    AttachmentsReport report;
    report.file = path;
    CNode<Attachment>& attachments = document.segment().Attachments;
    report.isReached = document.require(attachments, id::kAttachments);
    for (const AutoPtr<Attachment>& list : attachments) {
        for (const AutoPtr<AttachedFile>& file : list->Files) report.attachments.push_back(describe(*file));
    }
    return report;
}

}  // namespace mkvx
