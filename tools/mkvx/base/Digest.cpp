#include "base/Digest.h"

#include <openssl/evp.h>
#include <cstdint>
#include <stdexcept>

namespace mkvx {
namespace {

void require(int result) {
    if (result != 1) throw std::runtime_error("the crypto library failed to compute a SHA-1");
}

}  // namespace

Sha1::Sha1()
    : mAlgorithm(EVP_MD_fetch(nullptr, "SHA1", nullptr), EVP_MD_free),
      mContext(EVP_MD_CTX_new(), EVP_MD_CTX_free) {
    if (!mAlgorithm || !mContext) throw std::runtime_error("the crypto library offers no SHA-1");
}

Sha1::~Sha1() = default;

std::string Sha1::hex(const void* data, size_t size) {
    begin();
    add(data, size);
    return end();
}

void Sha1::begin() {
    require(EVP_DigestInit_ex2(mContext.get(), mAlgorithm.get(), nullptr));
}

void Sha1::add(const void* data, size_t size) {
    require(EVP_DigestUpdate(mContext.get(), data, size));
}

std::string Sha1::end() {
    uint8_t digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    require(EVP_DigestFinal_ex(mContext.get(), digest, &length));
    return toHex(digest, length);
}

std::string toHex(const void* data, size_t size) {
    static const char digits[] = "0123456789abcdef";
    const auto* bytes = static_cast<const uint8_t*>(data);
    std::string out(size * 2, '0');
    for (size_t i = 0; i < size; ++i) {
        out[2 * i] = digits[bytes[i] >> 4];
        out[2 * i + 1] = digits[bytes[i] & 15];
    }
    return out;
}

}  // namespace mkvx
