#include "source/Faults.h"

#include "base/Interrupt.h"

namespace mkvx {

FaultySource::FaultySource(const android::sp<android::DataSource>& source, const FaultOptions& faults,
                           Reads from)
    : mSource(source), mFaults(faults), mAll(from.all), mLonger(from.longer) {}

ssize_t FaultySource::readAt(off64_t offset, void* data, size_t size) {
    const uint64_t read = ++mAll;
    const uint64_t longer = size > 1 ? ++mLonger : 0;
    if (mFaults.lateUs > 0) sleepFor(mFaults.lateUs);
    if (mFaults.failAt > 0 && (read == mFaults.failAt || (mFaults.failsFromOn && read > mFaults.failAt)))
        return android::ERROR_IO;
    if (mFaults.shortEvery > 0 && longer > 0 && longer % mFaults.shortEvery == 0) size /= 2;
    return mSource->readAt(offset, data, size);
}

android::status_t FaultySource::getSize(off64_t* size) {
    return mFaults.noSize ? DataSource::getSize(size) : mSource->getSize(size);
}

}  // namespace mkvx
