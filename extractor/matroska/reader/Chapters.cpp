// Chapters and the look-up of a chapter atom. Nesting is followed to limit::kChapterDepth, which also bounds
// the stack of parsing, searching and destroying the tree.
#include <stdlib.h>

#include "matroska/reader/MatroskaReader.h"
#include "matroska/reader/ParseChildren.h"

namespace MatroskaExtReader {

namespace {

bool AdmitChapterObject(CMatroskaNode* node) {
    return node->File()->Admit(Kept::kChapterObject, node);
}

// Nested atoms of an atom or of an edition.
Result ParseAtom(ChapterAtom& parent, CMatroskaNode* child) {
    CMatroskaFile* file = child->File();
    if (file->ChapterDepth >= limit::kChapterDepth) {
        file->Losses.Add(LossKind::kTooDeep, child->HeaderStart(), child->Size());
        return kFailure;
    }
    if (!AdmitChapterObject(child)) return kFailure;
    ++file->ChapterDepth;
    const Result result = parent.Atoms.Parse(child);
    --file->ChapterDepth;
    return result;
}

}  // namespace

ChapterAtom::ChapterAtom() {
    ChapterUID.Set(static_cast<uint64_t>(rand()));
}

Result Chapter::Parse(CMatroskaNode* node) {
    return VisitWhole(node, [this](CMatroskaNode* child) {
        if (child->Id() == id::kEditionEntry && AdmitChapterObject(child)) (void)Editions.Parse(child);
        return true;
    });
}

Result EditionEntry::Parse(CMatroskaNode* node) {
    return VisitChildren(node, [this](CMatroskaNode* child) {
        if (child->Id() == id::kChapterAtom) (void)ParseAtom(*this, child);
        return true;
    });
}

Result ChapterAtom::Parse(CMatroskaNode* node) {
    static const ChildRow<ChapterAtom> kRows[] = {
        {id::kChapterUid, &ChapterAtom::ChapterUID},
        {id::kChapterTimeStart, &ChapterAtom::ChapterTimeStart},
        {id::kChapterTimeEnd, &ChapterAtom::ChapterTimeEnd},
        {id::kChapterFlagHidden, &ChapterAtom::ChapterFlagHidden},
        {id::kChapterFlagEnabled, &ChapterAtom::ChapterFlagEnabled},
        {id::kChapterDisplay,
         [](ChapterAtom& atom, CMatroskaNode* child) -> Result {
             return AdmitChapterObject(child) ? atom.Displays.Parse(child) : kFailure;
         }},
        {id::kChapterAtom, ParseAtom},
    };
    return ParseChildren(*this, node, kRows);
}

Result ChapterDisplay::Parse(CMatroskaNode* node) {
    static const ChildRow<ChapterDisplay> kRows[] = {
        {id::kChapString, &ChapterDisplay::ChapString},
        {id::kChapLanguage, &ChapterDisplay::ChapLanguage},
        {id::kChapCountry, &ChapterDisplay::ChapCountry},
    };
    return ParseChildren(*this, node, kRows);
}

ChapterAtom* ChapterAtom::FindChapterAtom(uint64_t uid) {
    if (ChapterUID.Get() == uid) return this;
    for (const AutoPtr<ChapterAtom>& atom : Atoms) {
        ChapterAtom* found = atom->FindChapterAtom(uid);
        if (found != nullptr) return found;
    }
    return nullptr;
}

ChapterAtom* Segment::FindChapterAtom(uint64_t uid, int edition) const {
    int number = 0;
    for (const AutoPtr<Chapter>& chapters : Chapters) {
        for (const AutoPtr<EditionEntry>& entry : chapters->Editions) {
            if (number++ != edition) continue;
            return uid == 0 ? entry.get() : entry->FindChapterAtom(uid);
        }
    }
    return nullptr;
}

}  // namespace MatroskaExtReader
