// Whole files of one oddity each, for the targets that take files.
#pragma once

#include <string>
#include <vector>

#include "support/EbmlWriter.h"

namespace fuzz {

struct SeedFile {
    std::string name;
    testing_support::Bytes bytes;
};

// Each is a tree that is written once it is whole: the sizes come last, except those that are the oddity.
std::vector<SeedFile> MakeSeedFiles();

// One zlib stream.
testing_support::Bytes Deflated(const testing_support::Bytes& plain);

}  // namespace fuzz
