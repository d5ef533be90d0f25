// The examination's result as text for people.
#pragma once
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "check/Model.h"

namespace mkvx {

// One verdict line and, unless `isBrief`, what there is to say of each track and of the file.
void renderChecked(const CheckedFile& checked, bool isBrief, std::FILE* out);

// "CodecID at 438, its 6 bytes at 440: 41 5F ..."
std::string evidenceText(const Evidence& evidence);

// How many files have each verdict.
using VerdictCounts = std::map<Verdict, uint64_t>;
// "3 files: 1 nothing plays, 2 plays".
std::string countsText(const VerdictCounts& counts);

// The worst first; how many there are of each verdict at the end.
void renderCheckSummary(std::vector<CheckedFile> files, std::FILE* out);

}  // namespace mkvx
