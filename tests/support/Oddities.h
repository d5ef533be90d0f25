// The catalogue of small files of one oddity each, which the name says. Golden texts, damage, the comparison
// of two ways of reading and the fuzzers' seeds all take their files from here: an oddity that is added is
// seen by all of them.
#pragma once

#include <string>
#include <vector>

#include "support/EbmlWriter.h"

namespace testing_support {

enum Trait : unsigned {
    kGolden = 1,          // its tracks and units are a text in properties/golden
    kDamaged = 2,         // small and sound: is cut, changed and read from sources that misbehave
    kMustOpen = 4,        // opening ends the process, on purpose, where its Vorbis headers cannot be read
    kHoldsAddresses = 8,  // its units differ from run to run
};

struct Oddity {
    std::string name;
    unsigned traits;
    Bytes bytes;

    bool Has(Trait trait) const { return (traits & trait) != 0; }
};

// Those with all of these traits.
std::vector<Oddity> Oddities(unsigned traits = 0);
Bytes OddityNamed(const std::string& name);

}  // namespace testing_support
