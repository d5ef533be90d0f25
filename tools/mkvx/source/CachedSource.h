// A source in front of another one for somebody who parses the same bytes several times over: what was read
// once, by this process or by a child that it forked, is kept in a bounded cache and is not asked for again.
//
// Nobody can tell it from the other source but by the reads that this one gets. Requests of a block or more,
// which are payloads, go straight through; so does every request that touches a block which cannot be had
// whole, so that a medium fails where it would fail without the cache, and as it would. Several threads may
// read and take turns; processes must not read at the same time.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <mutex>
#include <optional>

#include "source/BlockCache.h"

namespace mkvx {

class CachedSource : public android::DataSource {
  public:
    // Of a source that knows its size; of another one nothing is kept.
    explicit CachedSource(const android::sp<android::DataSource>& source);

    android::status_t initCheck() const override { return mSource->initCheck(); }
    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    android::status_t getSize(off64_t* size) override { return mSource->getSize(size); }
    uint32_t flags() override { return mSource->flags(); }
    android::String8 getUri() override { return mSource->getUri(); }
    android::String8 getMIMEType() const override { return mSource->getMIMEType(); }

  private:
    // False where the source has to be asked for just this request.
    bool copy(uint64_t offset, uint8_t* out, size_t size);
    // Fetched where it is not held; nothing when it cannot be had whole.
    std::optional<BlockCache::Block> block(uint64_t number);

    const android::sp<android::DataSource> mSource;
    const uint64_t mSize;
    BlockCache mCache;
    std::mutex mMutex;
};

}  // namespace mkvx
