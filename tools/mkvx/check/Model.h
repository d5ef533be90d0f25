// The result model of an examination: what a device would do with one file, track by track, and why. Plain
// values, filled by File.cpp and its parts, printed by Text.cpp and Json.cpp; copy freely.
//
// Offsets and sizes are bytes from the file's start, times microseconds. Texts that come from the file are
// raw bytes: print them through printable(). Sentences are ours, without a full stop, and printable already.
#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "check/Remedy.h"
#include "codecs/StreamFacts.h"
#include "device/Evidence.h"

namespace mkvx {

// From good to worst. The order is that of the final table, and the worst of a run makes its exit code.
enum class Verdict {
    kPlays,            // every track is offered, and nothing of it is lost
    kPlaysWithLosses,  // something is offered, and something is dropped, altered or missing
    kNoMatroska,       // the plug-in does not claim it
    kUnreadable,       // the file cannot be opened or read
    kUndecided,        // the examination was cut off by its time limit
    kNothingPlays,     // claimed, and not one track could play
    kStops,            // the media process that opens or plays it ends
};
constexpr Verdict kVerdicts[] = {
    Verdict::kPlays,     Verdict::kPlaysWithLosses, Verdict::kNoMatroska, Verdict::kUnreadable,
    Verdict::kUndecided, Verdict::kNothingPlays,    Verdict::kStops,
};

// "plays", "plays with losses", ...
const char* describe(Verdict verdict);
// The same as an identifier of JSON: "plays", "plays_with_losses", ...
const char* toString(Verdict verdict);
// 0 plays, 1 no Matroska or unreadable, 3 losses, 4 nothing plays, 5 stops, 6 undecided; 2 is wrong usage.
int exitCodeOf(Verdict verdict);

// How much a finding weighs.
enum class Weight {
    kNote,   // odd, but nothing is missing
    kLoss,   // something is dropped, altered or cannot be reached
    kMute,   // the track is offered, and nothing useful comes out of it
    kFatal,  // the media process ends
};
// "note", "loss", "mute", "fatal".
const char* toString(Weight weight);

// One fact that makes a difference on a device.
struct Finding {
    std::string code;  // identifier that stays the same from version to version: "cues_miss_master"
    Weight weight = Weight::kNote;
    std::string sentence;  // what happens, and why
    std::optional<Evidence> evidence;
    Remedy remedy;  // empty where nothing mends it
};

// One codec configuration record that the decoder gets.
struct ConfigSummary {
    static constexpr size_t kMostBytes = 64;

    std::string key;             // its key's four characters, as `info` names it
    size_t size = 0;             // whole
    std::vector<uint8_t> bytes;  // the first kMostBytes at most
};

// What reading a track to its end gave.
struct TrackCounts {
    uint64_t blocks = 0;      // in the file
    uint64_t units = 0;       // delivered; subtitle events that reach this track's source
    uint64_t unitBytes = 0;   // in them
    uint64_t unreadable = 0;  // blocks that were due and could not be read
};

// One TrackEntry, in file order.
struct TrackVerdict {
    uint64_t number = 0;          // TrackNumber
    uint64_t type = 0;            // TrackType
    std::string kind;             // "video", "audio", "subtitle", or "type N"
    std::string codecId;          // as the file has it, its first 64 bytes
    uint64_t position = 0;        // of the TrackEntry
    std::optional<size_t> index;  // the framework's, when it is offered
    std::string mime;             // only when offered, like the next
    std::vector<ConfigSummary> config;
    StreamFacts stream;   // by the configuration, or else the first units
    std::string decoder;  // that takes it, of the device whose list is given; else empty
    // Why it is not offered; absent when it is.
    std::optional<Finding> dropped;
    std::vector<Finding> findings;  // what else is to be said of it

    std::optional<TrackCounts> counts;  // absent where the units were not read

    bool isOffered() const { return index.has_value(); }
};

// Where the file's bytes go. Together they are the file's size.
struct ByteShares {
    uint64_t delivered = 0;    // payloads of blocks that reach a source
    uint64_t notOffered = 0;   // payloads of blocks that reach none, and what blocks hold beside their frames
    uint64_t metadata = 0;     // everything that describes, block headers and attachments included
    uint64_t padding = 0;      // Void, CRC-32
    uint64_t damaged = 0;      // skipped to find the next element, or a block that cannot be read
    uint64_t unreachable = 0;  // behind what opening and reading look at
};

// How seeks find their place.
struct SeekFacts {
    std::string source;         // "cues", "scan" or "none"
    uint64_t points = 0;        // cue points
    uint64_t masterPoints = 0;  // those that name the master track
    uint64_t masterTrack = 0;   // TrackNumber
    uint64_t clusters = 0;      // in the file; 0 without a pass over all units
    int64_t durationUs = 0;     // as seeking sees it; a target at or behind it ends the stream
};

struct CheckedFile {
    std::string path;
    Verdict verdict = Verdict::kUnreadable;
    std::string reason;  // one sentence for the verdict; empty for kPlays
    uint64_t size = 0;
    std::optional<int64_t>
        mtimeUs;                // of its last change, since 1970; absent for what is no file of this machine
    std::string containerMime;  // empty unless claimed and opened
    std::vector<TrackVerdict> tracks;
    std::vector<Finding> findings;     // of the file as a whole
    std::optional<ByteShares> shares;  // absent without a pass over all units
    std::optional<SeekFacts> seeking;
};

}  // namespace mkvx
