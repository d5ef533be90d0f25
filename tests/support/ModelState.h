// What opening a file found, as text: for comparing two ways of reading it.
#pragma once

#include <string>

#include "matroska/reader/MatroskaReader.h"

namespace testing_support {

// Init, and an index from the Cues or from a scan, as the extractor does it, within the limits of opening.
void OpenWithIndex(MatroskaExtReader::CMatroskaFile* file);

// Header, Info, SeekHeads, tracks, Cues, index, chapters, attachments, and what each loss, each failed read
// and the measure of work came to.
std::string ModelState(const MatroskaExtReader::CMatroskaFile& file);

// The same of these bytes, opened with or without pieces.
std::string StateOf(const android::sp<android::DataSource>& source, bool takesPieces);

}  // namespace testing_support
