// What runs of check come to: a library's summary, and what became of it between two runs. Plain values.
#pragma once
#include <cstdint>
#include <cstdio>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "base/Format.h"
#include "check/Model.h"
#include "check/Text.h"

namespace mkvx {

// A finding as far as two runs can tell whether it is the same one.
struct FindingKey {
    std::optional<uint64_t> track;  // TrackNumber; of the file where it is absent
    std::string code;
    Weight weight = Weight::kNote;

    bool operator<(const FindingKey& other) const {
        return std::tie(track, code, weight) < std::tie(other.track, other.code, other.weight);
    }
    bool operator==(const FindingKey& other) const {
        return track == other.track && code == other.code && weight == other.weight;
    }
};

// What is kept of a file: a library may have millions.
struct JudgedFile {
    std::string path;
    Verdict verdict = Verdict::kPlays;
    std::string reason;
    uint64_t size = 0;
    std::set<FindingKey> findings;
};

// ---- summary

struct FindingCount {
    std::string code;
    Weight weight = Weight::kNote;  // the gravest
    uint64_t files = 0;
    std::string example;  // the first path
};

struct Summary {
    VerdictCounts verdicts;
    uint64_t files = 0, bytes = 0;
    uint64_t superseded = 0;             // results of files that were judged again
    std::vector<FindingCount> findings;  // the gravest and most frequent first
    std::vector<JudgedFile> worst;       // files that do not play whole, the worst first, then by path
    uint64_t unlisted = 0;               // more of those than may be listed
};

void printText(const Summary& summary, std::FILE* out);
void printJson(const Summary& summary, std::FILE* out);
// A page for a browser, of one file.
std::string summaryPage(const Summary& summary);

// ---- difference

struct FileDifference {
    enum class Kind { kBetter, kWorse, kChanged, kNew, kGone };

    Kind kind = Kind::kChanged;
    std::string path;
    std::optional<Verdict> before, after;  // absent where the file is new, or gone
    std::string reason;                    // for the verdict after
    std::vector<FindingKey> gone, came;
};
// "better", "worse", ...
const char* toString(FileDifference::Kind kind);

struct LibraryDifference {
    uint64_t same = 0;
    std::vector<FileDifference> files;  // by kind in the order of Kind, then by path
};

void printText(const LibraryDifference& difference, std::FILE* out);
void printJson(const LibraryDifference& difference, std::FILE* out);

}  // namespace mkvx
