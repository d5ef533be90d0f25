#include "check/Model.h"

#include "base/Failure.h"

namespace mkvx {
namespace {

struct VerdictRow {
    Verdict verdict;
    const char* description;
    const char* identifier;
    int exitCode;
};

constexpr VerdictRow kRows[] = {
    {Verdict::kPlays, "plays", "plays", kExitDone},
    {Verdict::kPlaysWithLosses, "plays with losses", "plays_with_losses", kExitLosses},
    {Verdict::kNoMatroska, "no Matroska", "no_matroska", kExitFileUnusable},
    {Verdict::kUnreadable, "unreadable", "unreadable", kExitFileUnusable},
    {Verdict::kUndecided, "undecided", "undecided", kExitUndecided},
    {Verdict::kNothingPlays, "nothing plays", "nothing_plays", kExitNothingPlays},
    {Verdict::kStops, "stops the media process", "stops_the_media_process", kExitStopsProcess},
};

const VerdictRow& rowOf(Verdict verdict) {
    return kRows[static_cast<size_t>(verdict)];
}

}  // namespace

const char* describe(Verdict verdict) {
    return rowOf(verdict).description;
}

const char* toString(Verdict verdict) {
    return rowOf(verdict).identifier;
}

int exitCodeOf(Verdict verdict) {
    return rowOf(verdict).exitCode;
}

const char* toString(Weight weight) {
    switch (weight) {
        case Weight::kNote:
            return "note";
        case Weight::kLoss:
            return "loss";
        case Weight::kMute:
            return "mute";
        case Weight::kFatal:
            return "fatal";
    }
    return "";
}

}  // namespace mkvx
