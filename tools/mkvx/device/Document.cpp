#include "device/Document.h"

#include "base/Log.h"
#include "matroska/reader/MatroskaReader.h"

namespace mkvx {
namespace {

namespace id = MatroskaExtReader::id;
using MatroskaExtReader::CMatroskaFile;
using MatroskaExtReader::CMatroskaNode;
using MatroskaExtReader::CNode;

int64_t usOf(const MatroskaExtReader::CUInt& ns) {
    return int64_t(ns.Get() / 1000);
}

std::string textOf(const MatroskaExtReader::TextValue& text) {
    return text.c_str();  // to the first zero byte
}

// Recursion is as deep as the reader follows nested chapters.
Chapter describe(const MatroskaExtReader::ChapterAtom& atom) {
    Chapter chapter;
    chapter.startUs = usOf(atom.ChapterTimeStart);
    if (atom.ChapterTimeEnd.IsSet()) chapter.endUs = usOf(atom.ChapterTimeEnd);
    chapter.isHidden = atom.ChapterFlagHidden.Get() != 0;
    chapter.isEnabled = atom.ChapterFlagEnabled.Get() != 0;
    for (const auto& display : atom.Displays)
        chapter.titles.push_back(
            {textOf(display->ChapString), textOf(display->ChapLanguage), textOf(display->ChapCountry)});
    for (const auto& nested : atom.Atoms) chapter.nested.push_back(describe(*nested));
    return chapter;
}

Attachment describe(const MatroskaExtReader::AttachedFile& file) {
    return {textOf(file.FileName), textOf(file.FileMimeType), textOf(file.FileDescription),
            file.FileUID.Get(),    file.DataPosition,         file.DataSize};
}

}  // namespace

struct Document::State {
    explicit State(const android::sp<android::DataSource>& source) : file(source) {
        const CMatroskaFile::Opening opening(&file);
        isReadable = !MatroskaExtReader::Failed(file.Init());
    }

    // False when the list was empty and could be filled by looking through the Segment.
    template <typename T>
    bool require(CNode<T>& list, uint32_t id) {
        if (!isReadable || !list.isEmpty()) return true;
        const android::sp<CMatroskaNode> node = file.SegmentNode()->Child(id, true);
        return node == nullptr || MatroskaExtReader::Failed(list.Parse(node.get()));
    }

    MuteLog mute;
    CMatroskaFile file;
    bool isReadable = false;
};

Document::Document(const android::sp<android::DataSource>& source) : mState(new State(source)) {}

Document::~Document() = default;

bool Document::isReadable() const {
    return mState->isReadable;
}

Chapters Document::chapters() {
    Chapters chapters;
    const auto& lists = mState->file.Segment.Chapters;
    chapters.isReached = mState->require(mState->file.Segment.Chapters, id::kChapters);
    for (const auto& list : lists)
        for (const auto& edition : list->Editions) chapters.editions.push_back(describe(*edition).nested);
    return chapters;
}

Attachments Document::attachments() {
    Attachments attachments;
    const auto& lists = mState->file.Segment.Attachments;
    attachments.isReached = mState->require(mState->file.Segment.Attachments, id::kAttachments);
    for (const auto& list : lists)
        for (const auto& file : list->Files) attachments.files.push_back(describe(*file));
    return attachments;
}

}  // namespace mkvx
