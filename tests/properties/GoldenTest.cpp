// What small files of one peculiarity each give, as kept texts; and the same files from sources that
// misbehave.
#include "matroska/MatroskaFixture.h"
#include "support/Golden.h"
#include "support/Oddities.h"

namespace testing_support {
namespace {

// Failing reads that a listing goes past, so that it shows what lies behind a refused unit.
constexpr size_t kRetries = 1;

std::string ListingOf(const Oddity& file, const Faults& faults = {}) {
    return ListUnits([&] { return Open(file.bytes, faults); }, 0, kRetries);
}

TEST(Golden, Listings) {
    for (const Oddity& file : Oddities(kGolden)) {
        SCOPED_TRACE(file.name);
        ExpectGolden("properties/golden/" + file.name, ListTracks(Open(file.bytes)) + ListingOf(file));
    }
}

}  // namespace
}  // namespace testing_support
