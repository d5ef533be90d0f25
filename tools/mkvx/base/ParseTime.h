// Times as people give them.
#pragma once
#include <cstdint>
#include <optional>
#include <string>

namespace mkvx {

// Microseconds, or [-]HH:MM:SS with up to six decimals. Nothing when the text is neither or does not fit.
std::optional<int64_t> parseTime(const std::string& text);

}  // namespace mkvx
