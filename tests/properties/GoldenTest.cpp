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

// One read fails, whichever it is: the listing still ends, with no more reads than a few times the usual.
TEST(Golden, AnErrorAtAnyReadIsSurvived) {
    for (const Oddity& file : Oddities(kGolden)) {
        SCOPED_TRACE(file.name);
        const sp<FaultySource> counter = new FaultySource(file.bytes);
        const sp<MediaExtractor> undisturbed = Open(sp<android::DataSource>(counter));
        const uint64_t opening = counter->Reads();
        for (size_t i = 0; i < undisturbed->countTracks(); ++i) ReadAll(Started(undisturbed, i));
        const uint64_t usual = counter->Reads();
        for (uint64_t at = file.Has(kMustOpen) ? opening : 0; at < usual; ++at) {
            Faults faults;
            faults.errorAtCall = at;
            const sp<FaultySource> source = new FaultySource(file.bytes, faults);
            const sp<MediaExtractor> extractor = Open(sp<android::DataSource>(source));
            for (size_t i = 0; i < extractor->countTracks(); ++i)
                ReadAll(Started(extractor, i), nullptr, 1000);
            ASSERT_LE(source->Reads(), 4 * usual + 64 + 4 * file.bytes.size()) << "error at " << at;
        }
    }
}

}  // namespace
}  // namespace testing_support
