// Bytes as text (RFC 4648, section 4), by the crypto library.
#pragma once
#include <string>

namespace mkvx {

std::string toBase64(const std::string& bytes);
// Throws std::runtime_error for anything that is none.
std::string fromBase64(const std::string& text);

}  // namespace mkvx
