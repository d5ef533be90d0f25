// SHA-1 of byte ranges, as lower-case hex. One object serves many ranges, one after the other; not for use by
// two threads at once.
#pragma once
#include <cstddef>
#include <memory>
#include <string>

struct evp_md_ctx_st;
struct evp_md_st;

namespace mkvx {

class Sha1 {
  public:
    Sha1();  // throws std::runtime_error when the library offers no SHA-1
    ~Sha1();
    Sha1(const Sha1&) = delete;
    Sha1& operator=(const Sha1&) = delete;

    std::string hex(const void* data, size_t size);

    // The same in pieces: begin() forgets what was added before, and end() takes nothing more.
    void begin();
    void add(const void* data, size_t size);
    std::string end();

  private:
    // Fetched once: looking the algorithm up costs more than hashing a small unit.
    std::unique_ptr<evp_md_st, void (*)(evp_md_st*)> mAlgorithm;
    std::unique_ptr<evp_md_ctx_st, void (*)(evp_md_ctx_st*)> mContext;
};

// Lower-case hex of any bytes.
std::string toHex(const void* data, size_t size);

}  // namespace mkvx
