// What small files of one peculiarity each give, as kept texts; and the same files from sources that
// misbehave.
#include "matroska/MatroskaFixture.h"
#include "properties/Golden.h"
#include "support/PeculiarFiles.h"

namespace testing_support {
namespace {

// Failing reads that a listing goes past, so that it shows what lies behind a refused unit.
constexpr size_t kRetries = 1;

std::string ListingOf(const PeculiarFile& file, const Faults& faults = {}) {
    return ListUnits([&] { return Open(file.document, faults); }, file.masterIndex, kRetries);
}

TEST(Golden, Listings) {
    for (const PeculiarFile& file : PeculiarFiles()) {
        SCOPED_TRACE(file.name);
        ExpectGolden(file.name, ListTracks(Open(file.document)) + ListingOf(file));
    }
}

TEST(Golden, AnUnknownLengthChangesNoUnit) {
    for (const PeculiarFile& file : PeculiarFiles()) {
        SCOPED_TRACE(file.name);
        Faults faults;
        faults.sizeStatus = android::UNKNOWN_ERROR;
        EXPECT_EQ(ListingOf(file), ListingOf(file, faults));
        faults.sizeStatus = android::OK;
        faults.claimSize = true;
        faults.claimedSize = -1;
        EXPECT_EQ(ListingOf(file), ListingOf(file, faults));
    }
}

TEST(Golden, TheSameBytesGiveTheSameText) {
    for (const PeculiarFile& file : PeculiarFiles()) EXPECT_EQ(ListingOf(file), ListingOf(file)) << file.name;
}

// One read fails, whichever it is: the listing still ends, with no more reads than a few times the usual.
TEST(Golden, AnErrorAtAnyReadIsSurvived) {
    for (const PeculiarFile& file : PeculiarFiles()) {
        SCOPED_TRACE(file.name);
        const sp<FaultySource> counter = new FaultySource(file.document.bytes);
        const sp<MediaExtractor> undisturbed = Open(sp<android::DataSource>(counter));
        const uint64_t opening = counter->Reads();
        for (size_t i = 0; i < undisturbed->countTracks(); ++i) ReadAll(Started(undisturbed, i));
        const uint64_t usual = counter->Reads();
        for (uint64_t at = file.mustOpen ? opening : 0; at < usual; ++at) {
            Faults faults;
            faults.errorAtCall = at;
            const sp<FaultySource> source = new FaultySource(file.document.bytes, faults);
            const sp<MediaExtractor> extractor = Open(sp<android::DataSource>(source));
            for (size_t i = 0; i < extractor->countTracks(); ++i)
                ReadAll(Started(extractor, i), nullptr, 1000);
            ASSERT_LE(source->Reads(), 4 * usual + 64 + 4 * file.document.bytes.size()) << "error at " << at;
        }
    }
}

// Reads that come back short, or claim more than was asked, are failed reads: nothing past a buffer is
// touched (the address sanitizer watches) and everything ends.
TEST(Golden, ShortAndBoastfulReadsAreSurvived) {
    for (const PeculiarFile& file : PeculiarFiles()) {
        SCOPED_TRACE(file.name);
        if (file.mustOpen) continue;
        for (int variant = 0; variant < 9; ++variant) {
            Faults faults;
            if (variant < 3) faults.maxBytesPerCall = static_cast<size_t>(1 << variant);
            if (variant >= 3 && variant < 6) faults.shortEvery = static_cast<uint64_t>(variant) * 2 - 3;
            if (variant >= 6) faults.claimedExtra = static_cast<size_t>(variant - 5);
            ListingOf(file, faults);
        }
    }
}

}  // namespace
}  // namespace testing_support
