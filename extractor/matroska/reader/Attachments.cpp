#include "matroska/reader/MatroskaReader.h"
#include "matroska/reader/ParseChildren.h"

namespace MatroskaExtReader {

Result Attachment::Parse(CMatroskaNode* node) {
    return VisitChildren(node, [this](CMatroskaNode* child) {
        if (child->Id() == id::kAttachedFile && child->File()->Admit(Kept::kAttachedFile, child))
            (void)Files.Parse(child);
        return true;
    });
}

Result AttachedFile::Parse(CMatroskaNode* node) {
    static const ChildRow<AttachedFile> kRows[] = {
        {id::kFileDescription, &AttachedFile::FileDescription},
        {id::kFileName, &AttachedFile::FileName},
        {id::kFileMimeType, &AttachedFile::FileMimeType},
        {id::kFileData,
         [](AttachedFile& file, CMatroskaNode* child) {
             file.DataPosition = child->DataStart();
             file.DataSize = child->Size();
             return kOk;
         }},
        {id::kFileUid, &AttachedFile::FileUID},
    };
    return ParseChildren(*this, node, kRows);
}

}  // namespace MatroskaExtReader
