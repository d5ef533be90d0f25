// Small files of one peculiarity each, for tests that treat many files alike. The name says the peculiarity
// and is the name of the file's golden text.
#pragma once

#include <string>
#include <vector>

#include "support/EbmlWriter.h"

namespace testing_support {

struct PeculiarFile {
    std::string name;
    Document document;
    size_t masterIndex = 0;  // of the track whose reading brings the subtitles
    // Opening ends the process, on purpose, where the Vorbis headers cannot be read.
    bool mustOpen = false;
};

std::vector<PeculiarFile> PeculiarFiles();

}  // namespace testing_support
