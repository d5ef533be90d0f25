// One file in the hands of two builds of the plug-in: the first difference of each part. Plain values.
#pragma once
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "base/Format.h"
#include "base/Listing.h"

namespace mkvx {

// In the order in which a file goes through them.
enum class Part { kOpening, kTracks, kUnits, kSeeks, kEnd };
// "opening", "tracks", ...
const char* toString(Part part);

// What both builds said at the first place where they differ; empty where one had nothing more to say.
struct PartDifference {
    Part part = Part::kOpening;
    std::string base, other;
};

struct ComparedFile {
    std::string path;
    uint64_t tracks = 0, reads = 0,
             seeks = 0;                       // of which the same came; a read gives a unit or tells the end
    std::vector<PartDifference> differences;  // one a part at most
};

void printText(const ComparedFile& compared, std::FILE* out);
void printJson(const ComparedFile& compared, std::FILE* out);
// Text, or an object a line.
std::unique_ptr<Listing<ComparedFile>> newComparedListing(Format format, std::FILE* out);

}  // namespace mkvx
