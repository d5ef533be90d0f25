// One HTTP connection that asks for ranges of one URL, as libcurl makes it.
//
// Redirects are followed, to http and https only. Proxies, and the certificate authorities of CURL_CA_BUNDLE,
// are taken from the environment, as curl does. No request waits longer than the time limit for a connection,
// nor for as long for next to no data. One thread; after a fork() the child gets a connection of its own.
#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace mkvx {

// "Content-Range: bytes FIRST-LAST/TOTAL", or "bytes */TOTAL".
struct ContentRange {
    std::optional<uint64_t> first, total;
};

struct HttpAnswer {
    enum class End {
        kComplete,  // as far as its own length goes
        kStopped,   // by the receiver of the body
        kCut,       // the connection ended or broke
        kTimedOut,  // too long without a connection, or without data
        kFailed     // anything else: no such host, a bad certificate, a protocol that is not allowed
    };
    End end = End::kFailed;
    std::string reason;  // in words, when the end is none of the first two
    int status = 0;      // of the last answer, 0: there was none
    std::optional<ContentRange> range;
    std::optional<uint64_t> length;  // Content-Length
};

class HttpClient {
  public:
    virtual ~HttpClient() = default;

    // Takes the body of the final answer, piece by piece; false ends the request. The answer's status, range
    // and length are known by then. What it throws ends the request and leaves get().
    using Body = std::function<bool(const HttpAnswer& answer, const uint8_t* bytes, size_t size)>;

    // Asks for the bytes from `first` to `last`; both inclusive, `last` at least `first`.
    virtual HttpAnswer get(uint64_t first, uint64_t last, const Body& body) = 0;
};

// Throws std::runtime_error when there can be no connections at all.
std::unique_ptr<HttpClient> newHttpClient(const std::string& url, uint32_t timeoutS);

}  // namespace mkvx
