// What every fuzz target has: an entry that takes any bytes, and a way to say that a promise was broken.
//
// A target runs production code with production limits. It returns for every input; a broken promise, a
// sanitizer's finding, or an assertion that is not one of the extractor's own seven ends the process. The
// same entries are driven by libFuzzer (Fuzzer.cpp) and, in every build, by the replay of kept inputs
// (Replay.cpp).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "support/EbmlWriter.h"

namespace fuzz {

using testing_support::Bytes;

// The entries. Each takes its options from a block of fixed size at the input's front, so that the rest keeps
// its place when an option changes.
void RunPlugin(const uint8_t* data, size_t size);     // the whole plug-in; PluginScript.h describes the front
void RunNode(const uint8_t* data, size_t size);       // walking elements and reading values
void RunLacing(const uint8_t* data, size_t size);     // lacing headers
void RunEncodings(const uint8_t* data, size_t size);  // content encodings
void RunCodecPrivate(const uint8_t* data, size_t size);  // codec configuration and stream inspection

struct Target {
    const char* name;
    void (*run)(const uint8_t* data, size_t size);
};
extern const Target kTargets[5];

// Keeps the log quiet; to be called once before the first run.
void Prepare();

// Ends the process with `promise` when it does not hold.
void Require(bool holds, const std::string& promise);
void RequireEqual(const std::string& expected, const std::string& actual, const std::string& what);

}  // namespace fuzz
