// What came of mending a file: what was run, and which of its findings are gone, stay or came. Plain values.
#pragma once
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "base/Format.h"
#include "check/Model.h"

namespace mkvx {

// A finding, and the track that it is about by its number in the file that was mended.
struct FindingOfTrack {
    std::optional<uint64_t> track;
    Finding finding;
};

struct MendChanges {
    std::vector<FindingOfTrack> gone, stays, came;
};

// One way to mend the file, the first that is good enough being taken.
struct MendAttempt {
    std::vector<std::vector<std::string>> commands;  // as people would give them
    std::string problem;  // why it was not taken; empty where it was, or none was tried
};

struct MendReport {
    std::string file, output;
    Verdict before = Verdict::kUnreadable;
    std::string reason;  // for that verdict
    std::vector<MendAttempt> attempts;
    std::vector<uint64_t> leftOut;  // numbers of tracks that the new file does not have
    bool isDryRun = false;
    // Of the new file; absent where none was written.
    std::optional<Verdict> after;
    std::string reasonAfter;
    MendChanges changes;  // where none was written, what cannot be mended stays
};

void printText(const MendReport& report, std::FILE* out);
void printJson(const MendReport& report, std::FILE* out);

}  // namespace mkvx
