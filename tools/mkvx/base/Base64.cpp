#include "base/Base64.h"

#include <openssl/evp.h>
#include <stdexcept>

namespace mkvx {
namespace {

constexpr size_t kMost = 1u << 20;  // far beyond any path, and within the library's int

}  // namespace

std::string toBase64(const std::string& bytes) {
    if (bytes.size() > kMost) throw std::runtime_error("too long for base64");
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');  // the library ends it with a zero
    const int length =
        ::EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                          reinterpret_cast<const unsigned char*>(bytes.data()), int(bytes.size()));
    text.resize(size_t(length));
    return text;
}

std::string fromBase64(const std::string& text) {
    std::string bytes(text.size() / 4 * 3, '\0');
    const int length =
        text.size() > 2 * kMost
            ? -1
            : ::EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                                reinterpret_cast<const unsigned char*>(text.data()), int(text.size()));
    if (length < 0 || size_t(length) != bytes.size()) throw std::runtime_error("no base64");
    const size_t last = text.find_last_not_of('=');
    bytes.resize(bytes.size() - (text.size() - (last == std::string::npos ? 0 : last + 1)));
    return bytes;
}

}  // namespace mkvx
