// Sound small files, cut at every byte and changed in every byte.
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/foundation/AMessage.h>

#include <algorithm>

#include "properties/Measure.h"
#include "properties/Samples.h"
#include "properties/Sanitizers.h"
#include "matroska/PluginExports.h"
#include "support/FaultySource.h"
#include "support/Listing.h"

namespace testing_support {
namespace {

using android::MediaExtractor;
using android::sp;

// The units of each track that is offered.
std::vector<std::vector<Unit>> UnitsOf(const Bytes& bytes) {
    const SilentLog silence;
    const sp<android::DataSource> source = new FaultySource(bytes);
    const sp<MediaExtractor> extractor = android::createInstance(source, nullptr);
    std::vector<std::vector<Unit>> units;
    for (size_t i = 0; i < extractor->countTracks(); ++i) {
        const sp<android::MediaSource> track = extractor->getTrack(i);
        track->start(nullptr);
        units.push_back(ReadAll(track));
        track->stop();
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
    for (const Sample& sample : Samples()) {
        SCOPED_TRACE(sample.name);
        if (sample.holdsAddresses) continue;
        const auto whole = UnitsOf(sample.file.bytes);
        size_t delivered = 0;
        for (size_t size = 0; size <= sample.file.bytes.size(); ++size) {
            const auto part =
                UnitsOf({sample.file.bytes.begin(), sample.file.bytes.begin() + static_cast<long>(size)});
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
    for (const Sample& sample : Samples()) {
        OnSmallStack([&] {  // one thread for all of them
            for (size_t at = 0; at < sample.file.bytes.size(); ++at) {
                for (const uint8_t change : changes) {
                    Bytes bytes = sample.file.bytes;
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
