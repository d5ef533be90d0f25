#include "source/HttpSource.h"

#include <fmt/format.h>
#include <algorithm>
#include <cstring>
#include <limits>

#include "base/Text.h"

namespace mkvx {
namespace {

using End = HttpAnswer::End;

constexpr unsigned kMostBreaks = 4;  // within one block, before the source is given up
constexpr uint64_t kMib = 1 << 20;

bool mayPass(int status) {
    return status == 408 || status == 429 || status >= 500;
}

}  // namespace

std::string wrongAnswer(const HttpAnswer& answer, uint64_t asked, uint32_t timeoutS) {
    if (answer.end == End::kTimedOut)
        return fmt::format("nothing came for {} s at byte {} (--url-timeout SECONDS waits longer)", timeoutS,
                           asked);
    if (answer.end == End::kFailed)
        return answer.reason + (asked > 0 ? fmt::format(" (at byte {})", asked) : std::string());
    if (answer.status == 0) return fmt::format("the connection breaks at byte {}: {}", asked, answer.reason);
    if (answer.status == 200)
        return fmt::format("the server sends the whole file where bytes from {} were asked for", asked);
    if (answer.status != 206)
        return fmt::format("the server answers with status {} at byte {}", answer.status, asked);
    if (!answer.range || !answer.range->first)
        return fmt::format("the server does not say which bytes it sends (asked for byte {})", asked);
    if (*answer.range->first != asked)
        return fmt::format("the server sends bytes from {} where those from {} were asked for",
                           *answer.range->first, asked);
    return "";
}

// Puts the bytes of a run of blocks, as they come, into the cache.
class HttpSource::Filler {
  public:
    Filler(BlockCache& cache, uint64_t from, uint64_t end)
        : mCache(cache), mBlockSize(cache.blockSize()), mAt(from), mEnd(end) {}

    uint64_t at() const { return mAt; }
    bool isFull() const { return mAt >= mEnd; }

    // False once the run is full; what goes beyond it is dropped.
    bool take(const uint8_t* bytes, size_t size) {
        while (size > 0 && !isFull()) {
            const size_t inBlock = size_t(mAt % mBlockSize);
            if (inBlock == 0) mRoom = mCache.begin(mAt / mBlockSize);
            const size_t n = size_t(std::min<uint64_t>({size, mBlockSize - inBlock, mEnd - mAt}));
            std::memcpy(mRoom + inBlock, bytes, n);
            mAt += n;
            bytes += n;
            size -= n;
            if (inBlock + n == mBlockSize || isFull()) mCache.finish((mAt - 1) / mBlockSize, inBlock + n);
        }
        return size == 0 && !isFull();
    }

    // There is nothing more: the block begun last is shorter.
    void endHere() {
        if (mAt % mBlockSize != 0) mCache.finish(mAt / mBlockSize, size_t(mAt % mBlockSize));
        mEnd = mAt;
    }

  private:
    BlockCache& mCache;
    const size_t mBlockSize;
    uint64_t mAt, mEnd;
    uint8_t* mRoom = nullptr;
};

HttpSource::HttpSource(std::string url, const UrlOptions& options, std::unique_ptr<HttpClient> client,
                       std::optional<uint64_t> size, const std::shared_ptr<SourceTroubles>& troubles)
    : mUrl(std::move(url)),
      mOptions(options),
      mClient(std::move(client)),
      mSize(size),
      mTroubles(troubles),
      mCache(size_t(options.blockKib) * 1024, options.cacheMib * kMib, BlockCache::Keeps::kBytes),
      mShared(sizeof(Findings)) {}

void HttpSource::keepFirst(const std::string& bytes) {
    Filler filler(mCache, 0, bytes.size());
    (void)filler.take(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

uint64_t HttpSource::end() const {
    const uint64_t most = std::numeric_limits<int64_t>::max();
    return std::min({mSize.value_or(most), findings()->hasEnd ? findings()->end : most, most});
}

android::status_t HttpSource::getSize(off64_t* size) {
    if (!mSize || *mSize > uint64_t(std::numeric_limits<off64_t>::max())) return DataSource::getSize(size);
    *size = off64_t(*mSize);
    return android::OK;
}

ssize_t HttpSource::readAt(off64_t offset, void* data, size_t size) {
    if (offset < 0) return android::BAD_VALUE;
    const std::lock_guard<std::mutex> lock(mMutex);
    tell();
    const size_t blockSize = mCache.blockSize();
    size = std::min<size_t>(size, std::numeric_limits<ssize_t>::max());
    size_t done = 0;
    while (done < size && uint64_t(offset) + done < end()) {
        const uint64_t at = uint64_t(offset) + done, block = at / blockSize;
        auto held = mCache.find(block);
        if (!held) {
            const uint64_t last = std::min(uint64_t(offset) + size, end()) - 1;
            if (!fetch(mCache.missingRun(block, last / blockSize)))
                return done > 0 ? ssize_t(done) : ssize_t(android::ERROR_IO);
            held = mCache.find(block);
        }
        const size_t inBlock = size_t(at % blockSize);
        if (!held || held->size <= inBlock) break;  // the source ends here
        const size_t n = std::min(size - done, held->size - inBlock);
        std::memcpy(static_cast<uint8_t*>(data) + done, held->bytes + inBlock, n);
        done += n;
    }
    return ssize_t(done);
}

bool HttpSource::fetch(BlockCache::Run run) {
    if (findings()->isBroken) return false;
    const uint64_t blockSize = mCache.blockSize();
    const uint64_t last = std::min((run.first + run.count) * blockSize, end()) - 1;
    Filler filler(mCache, run.first * blockSize, last + 1);
    for (unsigned breaks = 0; !filler.isFull();) {  // each turn ends a block, or counts as a break
        const uint64_t asked = filler.at();
        const HttpAnswer answer =
            mClient->get(asked, last, [&](const HttpAnswer& head, const uint8_t* bytes, size_t size) {
                const bool isRight = head.status == 206 && head.range && head.range->first == asked;
                return isRight && filler.take(bytes, size);
            });
        if (answer.status == 416) {
            filler.endHere();
            endAt(asked);
            return true;
        }
        if (filler.isFull()) break;
        breaks = filler.at() / blockSize > asked / blockSize ? 0 : breaks + 1;
        if (const auto reason = judge(answer, asked, filler.at(), breaks)) {
            findings()->isBroken = true;
            note(*reason);
            return false;
        }
    }
    return true;
}

std::optional<std::string> HttpSource::judge(const HttpAnswer& answer, uint64_t asked, uint64_t reached,
                                             unsigned breaks) const {
    const bool isFinal = answer.end == End::kTimedOut || answer.end == End::kFailed;
    const std::string wrong = wrongAnswer(answer, isFinal ? reached : asked, mOptions.timeoutS);
    const bool mayGoOn = wrong.empty() || answer.status == 0 || mayPass(answer.status);
    if (!isFinal && mayGoOn && breaks <= kMostBreaks) return std::nullopt;
    if (!wrong.empty()) return wrong;
    return fmt::format("the server stops sending at byte {}, {} times", reached, breaks);
}

void HttpSource::endAt(uint64_t offset) {
    findings()->hasEnd = true;
    findings()->end = offset;
    if (mSize) note(fmt::format("ends at byte {}, though the server promised {}", offset, *mSize));
}

void HttpSource::note(const std::string& reason) {
    std::strncpy(findings()->reason, reason.c_str(), sizeof findings()->reason - 1);
    tell();
}

void HttpSource::tell() {
    if (mIsTold || findings()->reason[0] == '\0') return;
    mIsTold = true;
    mTroubles->push_back(printable(mUrl + ": " + findings()->reason));
}

}  // namespace mkvx
