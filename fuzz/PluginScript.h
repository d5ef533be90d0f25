// The front of a `plugin` input: how the byte source misbehaves, what is compared, and what is done with the
// sources. 32 bytes, all of whose values mean something:
//
//     0       flags, see below
//     1       low nibble n: a read gives at most 2^(n-1) bytes (0: any number); high nibble m: every m-th
//     call gives
//             one byte less (0: none)
//     2..3    the call that fails, counted from 1 (0: none)
//     4..7    an offset, for what a flag says of it
//     8..31   twelve operations of two bytes: low nibble what, high nibble on which track; then its argument
// All numbers are little-endian.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "FuzzTarget.h"
#include "support/FaultySource.h"

namespace fuzz {

constexpr size_t kScriptSize = 32;
constexpr size_t kOperations = 12;

enum ScriptFlag : uint8_t {
    kUnknownLength = 0x01,  // getSize fails
    kCachingSource = 0x02,  // flags() says so
    kWrongLength = 0x04,    // getSize is off by the offset, taken as a signed number
    kTwice = 0x08,          // all of it again, which has to give the same
    kCutShort = 0x10,       // again with a source that fails from the offset on: a prefix of the units
    kThreads = 0x20,        // again with one thread a track: the same units
    kFailsAtOffset = 0x40,  // the source fails from the offset on, throughout
    kScarceMemory = 0x80,   // units above as many bytes as the offset says cannot be allocated
};

enum class Do : uint8_t {
    kNothing,
    kRead,         // argument + 1 units, 16 at the most
    kSeek,         // to argument/255 of the duration; low bits: the mode
    kSeekExtreme,  // to one of a list of targets
    kLate,         // late by the argument times 50 ms, with a read
    kLateExtreme,  // late by one of a list of amounts
    kSeekAndLate,
    kStop,
    kStart,
    kAskFormat,
    kReplace,      // drop the source, take a new one of the same track and start it
    kReplaceIdle,  // the same without starting it
    kForget,       // give up the reference to the extractor
    kDescribe,     // the track's extensive metadata
    kInspect,      // what the iterators offer beyond the framework's interface
    kCount,
};

struct Operation {
    Do what;
    uint8_t track;
    uint8_t argument;
};

struct Script {
    uint8_t flags = 0;
    uint8_t pattern = 0;
    uint16_t errorAt = 0;
    uint32_t offset = 0;
    std::array<Operation, kOperations> operations{};

    // `data` holds at least kScriptSize bytes.
    static Script Parse(const uint8_t* data);
    bool Has(ScriptFlag flag) const { return (flags & flag) != 0; }
    // The source's behaviour for a file of `size` bytes.
    testing_support::Faults FaultsFor(size_t size) const;
    // No fault depends on which call it is.
    bool IsIndependentOfCalls() const { return errorAt == 0 && pattern >> 4 == 0; }
};

}  // namespace fuzz
