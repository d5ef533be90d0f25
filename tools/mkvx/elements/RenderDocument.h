// Chapters and attachments as a table or as one JSON object.
#pragma once
#include <cstdio>

#include "base/Format.h"
#include "elements/Document.h"

namespace mkvx {

// kTable or kJson.
void renderChapters(const ChaptersReport& report, Format format, std::FILE* out);
void renderAttachments(const AttachmentsReport& report, Format format, std::FILE* out);

}  // namespace mkvx
