#include "base/ParseTime.h"

#include <charconv>
#include <string_view>

namespace mkvx {
namespace {

// The number that the whole text is.
std::optional<int64_t> wholeNumber(std::string_view text) {
    int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<int64_t> digits(std::string_view text) {
    return text.empty() || text[0] == '-' ? std::nullopt : wholeNumber(text);
}

// "5", "5.25": microseconds below a minute.
std::optional<int64_t> parseSeconds(std::string_view text) {
    const size_t dot = text.find('.');
    const auto whole = digits(text.substr(0, dot));
    if (!whole || *whole > 59) return std::nullopt;
    if (dot == std::string_view::npos) return *whole * 1000000;
    std::string decimals(text.substr(dot + 1));
    if (decimals.size() > 6) return std::nullopt;
    const auto part = digits(decimals.append(6 - decimals.size(), '0'));
    if (!part || text.size() == dot + 1) return std::nullopt;
    return *whole * 1000000 + *part;
}

}  // namespace

std::optional<int64_t> parseTime(const std::string& text) {
    constexpr int64_t kMostHours = 2000000000;  // 64 bits of microseconds hold more
    std::string_view rest = text;
    if (rest.find(':') == std::string_view::npos) return wholeNumber(rest);
    const bool negative = rest[0] == '-';
    if (negative) rest.remove_prefix(1);
    const size_t first = rest.find(':'), second = rest.find(':', first + 1);
    if (second == std::string_view::npos) return std::nullopt;
    const auto hours = digits(rest.substr(0, first));
    const auto minutes = digits(rest.substr(first + 1, second - first - 1));
    const auto seconds = parseSeconds(rest.substr(second + 1));
    if (!hours || !minutes || !seconds || *hours > kMostHours || *minutes > 59) return std::nullopt;
    const int64_t us = (*hours * 60 + *minutes) * 60000000 + *seconds;
    return negative ? -us : us;
}

}  // namespace mkvx
