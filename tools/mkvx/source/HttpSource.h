// A file on a web server as a byte source: ranges of it, fetched in blocks when they are read and kept in a
// bounded cache.
//
// flags() says what the sources of a device say that cache a network stream, so the plug-in makes no index.
// The size is what the server says with its first answer; where the server's bytes end earlier, reads end
// there. Reads may come from several threads and take turns.
//
// What breaks is asked for again a few times, from where it broke. After that, or when nothing comes for too
// long, the source is broken for good: blocks that it holds can be read, every other read answers ERROR_IO,
// and the reason stands among the troubles.
#pragma once
#include <media/stagefright/DataSource.h>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "source/BlockCache.h"
#include "source/HttpClient.h"
#include "source/Options.h"

namespace mkvx {

// Asks for the first block. A server that answers with the whole file instead of a range is read to its end,
// into a temporary file, up to options.spoolMib; stderr gets a note. Throws FileFailure when there is no such
// file, or it cannot be had.
android::sp<android::DataSource> openUrl(const std::string& url, const UrlOptions& options,
                                         const std::shared_ptr<SourceTroubles>& troubles);

// What the caching sources of a device report for a network stream.
constexpr uint32_t kNetworkFlags =
    android::DataSource::kIsCachingDataSource | android::DataSource::kIsHTTPBasedSource;

class HttpSource : public android::DataSource {
  public:
    HttpSource(std::string url, const UrlOptions& options, std::unique_ptr<HttpClient> client,
               std::optional<uint64_t> size, const std::shared_ptr<SourceTroubles>& troubles);

    // Puts the first block, or the whole of a smaller file, into the cache.
    void keepFirst(const std::string& bytes);

    android::status_t initCheck() const override { return android::OK; }
    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    android::status_t getSize(off64_t* size) override;
    uint32_t flags() override { return kNetworkFlags; }
    android::String8 getUri() override { return android::String8(mUrl.c_str()); }

  private:
    class Filler;
    // What was found out about the server, by this process or by a child that it forked.
    struct Findings {
        bool isBroken;
        bool hasEnd;
        uint64_t end;      // where the server says that there is nothing more
        char reason[800];  // a trouble, when not empty
    };

    Findings* findings() const { return static_cast<Findings*>(mShared.get()); }
    bool fetch(BlockCache::Run run);
    // Nothing: go on asking. Else why the source is broken.
    std::optional<std::string> judge(const HttpAnswer& answer, uint64_t asked, uint64_t reached,
                                     unsigned breaks) const;
    void endAt(uint64_t offset);
    void note(const std::string& reason);
    void tell();
    uint64_t end() const;

    const std::string mUrl;
    const UrlOptions mOptions;
    const std::unique_ptr<HttpClient> mClient;
    const std::optional<uint64_t> mSize;
    const std::shared_ptr<SourceTroubles> mTroubles;
    BlockCache mCache;
    const SharedMemory mShared;  // Findings: what a child has waited for in vain, nobody waits for again
    bool mIsTold = false;
    std::mutex mMutex;
};

// For a reply that is not the range from `asked` on: why, in words; empty when it is that range.
std::string wrongAnswer(const HttpAnswer& answer, uint64_t asked, uint32_t timeoutS);

}  // namespace mkvx
