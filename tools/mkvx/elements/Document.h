// Chapters and attachments, as the plug-in's document model holds them.
//
// Texts are the bytes of the file and need not be valid UTF-8. Plain values.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "source/Options.h"

namespace mkvx {

struct ChapterTitle {
    std::string text, language, country;  // empty where the file says nothing
};

struct ChapterInfo {
    int64_t startUs = 0;
    std::optional<int64_t> endUs;
    bool isHidden = false, isEnabled = true;
    std::vector<ChapterTitle> titles;
    std::vector<ChapterInfo> nested;  // 64 levels at most
};

struct ChaptersReport {
    std::string file;
    bool isReached = true;  // false: the plug-in's model is without them, for nothing leads it there
    std::vector<std::vector<ChapterInfo>> editions;
};

struct AttachmentInfo {
    std::string name, mime, description;
    uint64_t uid = 0;
    uint64_t offset = 0;  // of the data in the file; 0 where there is none
    uint64_t size = 0;
    std::string savedAs;  // file name, once it was extracted
    std::string problem;  // why it could not be
};

struct AttachmentsReport {
    std::string file;
    bool isReached = true;
    std::vector<AttachmentInfo> attachments;
};

// Both throw FileFailure for a file that cannot be read or whose header the plug-in refuses.
ChaptersReport readChapters(const std::string& path, const SourceOptions& options);
AttachmentsReport readAttachments(const std::string& path, const SourceOptions& options);

}  // namespace mkvx
