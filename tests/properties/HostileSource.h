// A byte source whose content may be far larger than memory: content of bytes, each repeated, one behind the
// other. It counts what is asked of it, in total and for each place. Not for several threads at once.
#pragma once

#include <utils/Errors.h>
#include <utils/String8.h>
#include <media/stagefright/DataSource.h>

#include <cstdint>
#include <vector>

#include "support/EbmlWriter.h"

namespace testing_support {

struct Stretch {
    Bytes bytes;
    uint64_t times = 1;

    uint64_t Size() const { return bytes.size() * times; }
};
using Content = std::vector<Stretch>;

uint64_t SizeOf(const Content& content);

// The bytes of a tree without an EBML header.
inline Bytes Piece(const Elements& elements) {
    return Write(elements).bytes;
}
// EBML header and a Segment that lasts to the end of the source and begins with `children`.
inline Bytes OpenSegment(const Elements& children) {
    return Write({EbmlHeader(), Segment(children).UnknownSize()}).bytes;
}

class HostileSource : public android::DataSource {
  public:
    explicit HostileSource(Content content);

    android::status_t initCheck() const override { return android::OK; }
    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    android::status_t getSize(off64_t* size) override;

    // getSize answers a failure from now on.
    void HideSize() { mHidesSize = true; }

    uint64_t Size() const { return mSize; }
    uint64_t Reads() const { return mReads; }
    uint64_t BytesRead() const { return mBytesRead; }
    // How often the place that was asked for most often was asked for. Kept for the first megabyte.
    unsigned MostVisits() const { return mMostVisits; }

  private:
    size_t StretchAt(uint64_t offset) const;
    void Note(off64_t offset);

    const Content mStretches;
    std::vector<uint64_t> mStarts;
    uint64_t mSize = 0;
    bool mHidesSize = false;
    mutable size_t mLast = 0;
    uint64_t mReads = 0;
    uint64_t mBytesRead = 0;
    std::vector<uint16_t> mVisits;
    unsigned mMostVisits = 0;
};

}  // namespace testing_support
