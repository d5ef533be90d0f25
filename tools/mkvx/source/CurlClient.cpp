#include "source/CurlClient.h"

#include <curl/curl.h>
#include <strings.h>
#include <unistd.h>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string_view>

namespace mkvx {
namespace {

// Slower than this, bytes a second, is as good as nothing.
constexpr long kSlowest = 100;
constexpr long kMostRedirects = 10;

std::optional<uint64_t> takeNumber(std::string_view& text) {
    uint64_t value = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) return std::nullopt;
    text.remove_prefix(size_t(rest - text.data()));
    return value;
}

// The text behind `name`, without blanks at its start, when the line is that header.
std::optional<std::string_view> valueOf(std::string_view line, const char* name) {
    const size_t length = std::strlen(name);
    if (line.size() <= length || ::strncasecmp(line.data(), name, length) != 0 || line[length] != ':')
        return std::nullopt;
    line.remove_prefix(length + 1);
    while (!line.empty() && (line[0] == ' ' || line[0] == '\t')) line.remove_prefix(1);
    return line;
}

std::optional<ContentRange> parseRange(std::string_view text) {
    if (text.size() < 6 || ::strncasecmp(text.data(), "bytes ", 6) != 0) return std::nullopt;
    text.remove_prefix(6);
    ContentRange range;
    if (const auto first = takeNumber(text)) {
        if (text.empty() || text[0] != '-') return std::nullopt;
        text.remove_prefix(1);
        const auto last = takeNumber(text);
        if (!last || *last < *first) return std::nullopt;
        range.first = first;
    } else if (text.empty() || text[0] != '*') {
        return std::nullopt;
    } else {
        text.remove_prefix(1);
    }
    if (text.empty() || text[0] != '/') return std::nullopt;
    text.remove_prefix(1);
    range.total = takeNumber(text);  // nothing for '*'
    return range;
}

struct Transfer {
    const HttpClient::Body& body;
    bool (*wasInterrupted)();
    HttpAnswer answer = {};
    std::exception_ptr thrown = nullptr;
    bool isStopped = false;
};

size_t onHeader(char* bytes, size_t, size_t size, void* user) {
    auto& answer = static_cast<Transfer*>(user)->answer;
    const std::string_view line(bytes, size);
    if (line.substr(0, 5) == "HTTP/") {  // another answer, of a redirect's target for instance
        const size_t blank = line.find(' ');
        std::string_view rest = line.substr(blank == line.npos ? line.size() : blank + 1);
        answer = HttpAnswer();
        answer.status = int(takeNumber(rest).value_or(0));
    } else if (auto value = valueOf(line, "Content-Length")) {
        answer.length = takeNumber(*value);
    } else if (const auto range = valueOf(line, "Content-Range")) {
        answer.range = parseRange(*range);
    }
    return size;
}

// Exceptions must not pass through the library.
size_t onBody(char* bytes, size_t, size_t size, void* user) {
    auto& transfer = *static_cast<Transfer*>(user);
    try {
        if (transfer.body(transfer.answer, reinterpret_cast<uint8_t*>(bytes), size)) return size;
    } catch (...) {
        transfer.thrown = std::current_exception();
    }
    transfer.isStopped = true;
    return size == 0 ? 1 : 0;
}

// Called once a second at least, also where nothing comes: an answer other than 0 ends the transfer.
int onProgress(void* user, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    return static_cast<Transfer*>(user)->wasInterrupted() ? 1 : 0;
}

HttpAnswer::End endOf(CURLcode code, bool isStopped) {
    if (isStopped) return HttpAnswer::End::kStopped;
    switch (code) {
        case CURLE_OK:
            return HttpAnswer::End::kComplete;
        case CURLE_PARTIAL_FILE:
        case CURLE_RECV_ERROR:
        case CURLE_SEND_ERROR:
        case CURLE_GOT_NOTHING:
        case CURLE_HTTP2:
        case CURLE_HTTP2_STREAM:
            return HttpAnswer::End::kCut;
        case CURLE_OPERATION_TIMEDOUT:
            return HttpAnswer::End::kTimedOut;
        default:
            return HttpAnswer::End::kFailed;
    }
}

struct Connection {
    Connection(const std::string& url, uint32_t timeoutS) : handle(::curl_easy_init()) {
        if (handle == nullptr) throw std::bad_alloc();
        set(CURLOPT_URL, url.c_str());
        set(CURLOPT_USERAGENT, "mkvx/" MKVX_VERSION);
        set(CURLOPT_PROTOCOLS_STR, "http,https");
        set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
        set(CURLOPT_FOLLOWLOCATION, 1L);
        set(CURLOPT_MAXREDIRS, kMostRedirects);
        set(CURLOPT_CONNECTTIMEOUT, long(timeoutS));
        set(CURLOPT_LOW_SPEED_TIME, long(timeoutS));
        set(CURLOPT_LOW_SPEED_LIMIT, kSlowest);
        if (const char* authorities = std::getenv("CURL_CA_BUNDLE")) set(CURLOPT_CAINFO, authorities);
        set(CURLOPT_ERRORBUFFER, error);
        set(CURLOPT_HEADERFUNCTION, onHeader);
        set(CURLOPT_WRITEFUNCTION, onBody);
        set(CURLOPT_XFERINFOFUNCTION, onProgress);
        set(CURLOPT_NOPROGRESS, 0L);
    }
    ~Connection() { ::curl_easy_cleanup(handle); }

    template <typename T>
    void set(CURLoption option, T value) {
        const CURLcode code = ::curl_easy_setopt(handle, option, value);
        if (code != CURLE_OK) throw std::runtime_error(std::string("libcurl: ") + ::curl_easy_strerror(code));
    }

    CURL* const handle;
    char error[CURL_ERROR_SIZE] = "";
};

class CurlClient : public HttpClient {
  public:
    CurlClient(std::string url, uint32_t timeoutS, bool (*wasInterrupted)())
        : mUrl(std::move(url)), mTimeoutS(timeoutS), mWasInterrupted(wasInterrupted), mOwner(::getpid()) {
        static const CURLcode ready = ::curl_global_init(CURL_GLOBAL_DEFAULT);
        if (ready != CURLE_OK) throw std::runtime_error("libcurl cannot be used");
    }
    ~CurlClient() override {
        if (mOwner != ::getpid()) (void)mConnection.release();
    }

    HttpAnswer get(uint64_t first, uint64_t last, const Body& body) override;

  private:
    const std::string mUrl;
    const uint32_t mTimeoutS;
    bool (*const mWasInterrupted)();
    std::unique_ptr<Connection> mConnection;
    pid_t mOwner;  // the process that mConnection is of
};

HttpAnswer CurlClient::get(uint64_t first, uint64_t last, const Body& body) {
    if (mOwner != ::getpid()) {
        // Two processes on one connection would take each other's answers: the parent's is left to it as it
        // is, not even closed.
        (void)mConnection.release();
        mOwner = ::getpid();
    }
    if (!mConnection) mConnection = std::make_unique<Connection>(mUrl, mTimeoutS);
    Transfer transfer{body, mWasInterrupted};
    mConnection->set(CURLOPT_RANGE, (std::to_string(first) + "-" + std::to_string(last)).c_str());
    mConnection->set(CURLOPT_HEADERDATA, &transfer);
    mConnection->set(CURLOPT_WRITEDATA, &transfer);
    mConnection->set(CURLOPT_XFERINFODATA, &transfer);
    mConnection->error[0] = '\0';
    const CURLcode code = ::curl_easy_perform(mConnection->handle);
    if (transfer.thrown) std::rethrow_exception(transfer.thrown);
    HttpAnswer& answer = transfer.answer;
    answer.end = endOf(code, transfer.isStopped);
    if (answer.end != HttpAnswer::End::kComplete && answer.end != HttpAnswer::End::kStopped)
        answer.reason = mConnection->error[0] != '\0' ? mConnection->error : ::curl_easy_strerror(code);
    return std::move(answer);
}

}  // namespace
}  // namespace mkvx

mkvx::HttpClient* mkvxNewHttpClient(const std::string& url, uint32_t timeoutS, bool (*wasInterrupted)()) {
    return new mkvx::CurlClient(url, timeoutS, wasInterrupted);
}
