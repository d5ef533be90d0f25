// Sound small files, cut at every byte and changed in every byte.

#include <algorithm>

#include "matroska/MatroskaFixture.h"
#include "properties/Measure.h"
#include "properties/Sanitizers.h"
#include "support/Oddities.h"

namespace testing_support {
namespace {

// The units of each track that is offered.
std::vector<std::vector<Unit>> UnitsOf(const Bytes& bytes) {
    const sp<MediaExtractor> extractor = Open(bytes);
    std::vector<std::vector<Unit>> units;
    for (size_t i = 0; i < extractor->countTracks(); ++i) {
        const sp<MediaSource> track = Started(extractor, i);
        units.push_back(ReadAll(track));
        track->stop();  // takes queued subtitles along: how they merge depends on what follows
    }
    return units;
}

// What follows a block in its group may be cut off, so the last unit has its time and bytes only.
bool IsPrefix(const std::vector<Unit>& part, const std::vector<Unit>& whole) {
    if (part.size() > whole.size()) return false;
    if (part.empty()) return true;
    const Unit& last = part.back();
    const Unit& expected = whole[part.size() - 1];
    return std::equal(part.begin(), part.end() - 1, whole.begin()) && last.timeUs == expected.timeUs &&
           last.bytes == expected.bytes;
}

TEST(Damage, UnitsOfACutFileAreAPrefix) {
    for (const Oddity& sample : Oddities(kDamaged)) {
        SCOPED_TRACE(sample.name);
        if (sample.Has(kHoldsAddresses)) continue;
        const auto whole = UnitsOf(sample.bytes);
        size_t delivered = 0;
        for (size_t size = 0; size <= sample.bytes.size(); ++size) {
            const auto part = UnitsOf({sample.bytes.begin(), sample.bytes.begin() + static_cast<long>(size)});
            ASSERT_LE(part.size(), whole.size()) << "cut at " << size;
            size_t units = 0;
            for (size_t i = 0; i < part.size(); ++i) {
                ASSERT_TRUE(IsPrefix(part[i], whole[i])) << "cut at " << size << ", track " << i;
                units += part[i].size();
            }
            ASSERT_GE(units, delivered) << "cut at " << size;  // more of the file, never fewer units
            delivered = units;
        }
    }
}

TEST(Damage, EveryByteChanged) {
    // Every bit of the first byte of a size or an ID matters; elsewhere a few changes stand for all.
    const std::vector<uint8_t> changes =
        IS_SANITIZED ? std::vector<uint8_t>{0xFF, 0x10} : std::vector<uint8_t>{0xFF, 0x80, 0x40, 0x10, 0x01};
    for (const Oddity& sample : Oddities(kDamaged)) {
        OnSmallStack([&] {  // one thread for all of them
            for (size_t at = 0; at < sample.bytes.size(); ++at) {
                for (const uint8_t change : changes) {
                    Bytes bytes = sample.bytes;
                    bytes[at] ^= change;
                    ThrowHostile(bytes);
                    ASSERT_FALSE(testing::Test::HasFailure())
                        << sample.name << ", byte " << at << " changed by " << int{change};
                }
            }
        });
    }
}

}  // namespace
}  // namespace testing_support
