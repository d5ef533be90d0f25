// Opening a URL: what the server's first answer says decides how the file is read.
#include <fmt/format.h>
#include <algorithm>

#include "base/Failure.h"
#include "base/Progress.h"
#include "base/Terminal.h"
#include "base/Text.h"
#include "source/HttpSource.h"
#include "source/Spool.h"

namespace mkvx {
namespace {

using End = HttpAnswer::End;

constexpr unsigned kMostBreaks = 4;

// A whole file in place of a range. It keeps the flags of a network source.
class SpooledUrl : public android::DataSource {
  public:
    explicit SpooledUrl(const Spool& spool) : mFile(spool.source()) {}

    android::status_t initCheck() const override { return mFile->initCheck(); }
    ssize_t readAt(off64_t offset, void* data, size_t size) override {
        return mFile->readAt(offset, data, size);
    }
    android::status_t getSize(off64_t* size) override { return mFile->getSize(size); }
    uint32_t flags() override { return kNetworkFlags; }

  private:
    const android::sp<android::DataSource> mFile;
};

class UrlOpener {
  public:
    UrlOpener(const std::string& url, const UrlOptions& options)
        : mUrl(url), mOptions(options), mClient(newHttpClient(url, options.timeoutS)) {}

    android::sp<android::DataSource> open(const std::shared_ptr<SourceTroubles>& troubles) {
        const HttpAnswer answer = ask();
        if (answer.status == 200) return finishSpool(answer);
        const bool isEmpty = answer.status == 416 && answer.range && answer.range->total == uint64_t(0);
        const std::string wrong = isEmpty ? "" : wrongAnswer(answer, 0, mOptions.timeoutS);
        if (!wrong.empty()) fail(wrong);
        const android::sp<HttpSource> source =
            new HttpSource(mUrl, mOptions, std::move(mClient), answer.range->total, troubles);
        const bool isWhole = mFirst.size() == mOptions.blockKib * size_t(1024) ||
                             answer.range->total == uint64_t(mFirst.size());
        if (isWhole && !mFirst.empty()) source->keepFirst(mFirst);  // else it is asked for again
        return source;
    }

  private:
    [[noreturn]] void fail(const std::string& reason) const {
        throw FileFailure(printable(mUrl), printable(reason));
    }

    // Once more where the connection broke before anything came.
    HttpAnswer ask() {
        HttpAnswer answer;
        for (unsigned breaks = 0; breaks <= kMostBreaks; ++breaks) {
            answer = get(0);
            if (answer.end != End::kCut || answer.status != 0) break;
        }
        return answer;
    }

    HttpAnswer get(uint64_t from) {
        mSkip = from;
        const uint64_t block = mOptions.blockKib * uint64_t(1024);
        return mClient->get(from, from + block - 1,
                            [this](const HttpAnswer& head, const uint8_t* bytes, size_t size) {
                                return take(head, bytes, size);
                            });
    }

    bool take(const HttpAnswer& head, const uint8_t* bytes, size_t size) {
        if (head.status == 200) return spool(head, bytes, size);
        if (head.status != 206 || mSpool) return false;
        mFirst.append(reinterpret_cast<const char*>(bytes),
                      std::min(size, mOptions.blockKib * size_t(1024) - mFirst.size()));
        return mFirst.size() < mOptions.blockKib * size_t(1024);
    }

    bool spool(const HttpAnswer& head, const uint8_t* bytes, size_t size) {
        const size_t skipped = size_t(std::min<uint64_t>(mSkip, size));
        mSkip -= skipped;
        if (!mSpool) beginSpool(head);
        if (mSpool->size() + (size - skipped) > limit()) failTooLarge();
        mSpool->append(bytes + skipped, size - skipped);
        mProgress->reachBytes(mSpool->size());
        return true;
    }

    void beginSpool(const HttpAnswer& head) {
        if (head.length.value_or(0) > limit()) failTooLarge();
        tell(fmt::format("{}: the server serves no ranges; all of it is read into a temporary file first",
                         mUrl));
        mSpool = std::make_unique<Spool>(printable(mUrl));
        mProgress = std::make_unique<Progress>(mUrl, ProgressStyle::kLine);
    }

    // Such a server sends everything once more after a break; what is there already is passed over.
    android::sp<android::DataSource> finishSpool(HttpAnswer answer) {
        const std::optional<uint64_t> promised = answer.length;
        for (unsigned breaks = 1; answer.end == End::kCut; ++breaks) {
            const uint64_t at = mSpool ? mSpool->size() : 0;
            if (breaks > kMostBreaks)
                fail(fmt::format("the connection breaks at byte {}{}, {} times", at,
                                 promised ? fmt::format(" of {}", *promised) : "", breaks));
            answer = get(at);
        }
        if (answer.status == 206) fail("the server serves ranges at one time and none at another");
        if (answer.end != End::kComplete || answer.status != 200)
            fail(wrongAnswer(answer, mSpool ? mSpool->size() : 0, mOptions.timeoutS));
        mProgress.reset();
        if (!mSpool) mSpool = std::make_unique<Spool>(printable(mUrl));  // an empty file
        return new SpooledUrl(*mSpool);
    }

    uint64_t limit() const { return uint64_t(mOptions.spoolMib) << 20; }

    [[noreturn]] void failTooLarge() const {
        fail(fmt::format(
            "the server serves no ranges, and the whole file is larger than {} MiB (--url-spool MIB "
            "keeps more of it on disk)",
            mOptions.spoolMib));
    }

    const std::string mUrl;
    const UrlOptions mOptions;
    std::unique_ptr<HttpClient> mClient;
    std::string mFirst;  // the first block, when it comes as a range
    std::unique_ptr<Spool> mSpool;
    std::unique_ptr<Progress> mProgress;
    uint64_t mSkip = 0;
};

}  // namespace

android::sp<android::DataSource> openUrl(const std::string& url, const UrlOptions& options,
                                         const std::shared_ptr<SourceTroubles>& troubles) {
    return UrlOpener(url, options).open(troubles);
}

}  // namespace mkvx
