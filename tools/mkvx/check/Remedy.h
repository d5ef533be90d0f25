// Commands that mend a file, for people to copy. The result is always a new file, and never has a finding
// that the file did not have: laces in particular, which the muxer would make of small frames when left
// alone.
#pragma once
#include <cstddef>
#include <string>
#include <vector>

namespace mkvx {

// A path as a shell takes it; FILE in its place where it is standard input or cannot be typed.
std::string shellWord(const std::string& path);

// Written anew by another muxer: what is whole is kept, with Duration, Cues and lengths made right.
std::string remuxCommand(const std::string& path);
// The same through a tool that also undoes rarer encodings.
std::string copyCommand(const std::string& path);
// One stream coded again: `kind` is 'v', 'a' or 's', `ordinal` its place among its kind, from 0.
std::string recodeCommand(const std::string& path, char kind, size_t ordinal, const std::string& encoder);
// WebVTT as SubRip in its place; `entry` counts from 0.
std::string webvttCommand(const std::string& path, size_t entry);
// Only these TrackEntries, counted from 0, which are then numbered from 1 on.
std::string selectCommand(const std::string& path, const std::vector<size_t>& entries);

}  // namespace mkvx
