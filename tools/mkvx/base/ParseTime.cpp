#include "base/ParseTime.h"

#include <fmt/format.h>
#include <charconv>
#include <cstdlib>
#include <string_view>

namespace mkvx {
namespace {

constexpr int64_t kMillion = 1000000;

struct Unit {
    std::string_view name;
    int64_t us;
};
constexpr Unit kUnits[] = {
    {"us", 1}, {"ms", 1000}, {"s", kMillion}, {"min", 60 * kMillion}, {"h", 3600 * kMillion}};

// The number that the whole text is, without a sign.
std::optional<int64_t> digits(std::string_view text) {
    int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return !text.empty() && text[0] != '-' && isWhole ? std::optional<int64_t>(value) : std::nullopt;
}

// "5", "5.25" of a unit, as microseconds.
std::optional<int64_t> parseAmount(std::string_view text, int64_t unitUs) {
    const size_t dot = text.find('.');
    const auto whole = digits(text.substr(0, dot));
    if (!whole || *whole > INT64_MAX / unitUs - 1) return std::nullopt;
    if (dot == std::string_view::npos) return *whole * unitUs;
    std::string decimals(text.substr(dot + 1));
    if (decimals.empty() || decimals.size() > 6) return std::nullopt;
    const auto millionths = digits(decimals.append(6 - decimals.size(), '0'));
    if (!millionths || *millionths * unitUs % kMillion != 0) return std::nullopt;
    return *whole * unitUs + *millionths * unitUs / kMillion;
}

// "00:01:30.5" and "1:30"; minutes of the latter may be more than an hour's.
std::optional<int64_t> parseClock(std::string_view text) {
    const size_t last = text.rfind(':'), first = text.find(':');
    const bool hasHours = first != last;
    const auto hours = hasHours ? parseAmount(text.substr(0, first), 3600 * kMillion) : 0;
    const std::string_view minutesText =
        hasHours ? text.substr(first + 1, last - first - 1) : text.substr(0, last);
    const auto minutes = parseAmount(minutesText, 60 * kMillion);
    const auto seconds = parseAmount(text.substr(last + 1), kMillion);
    const bool isPlain = text.substr(0, last).find('.') == std::string_view::npos;
    if (!hours || !minutes || !seconds || !isPlain) return std::nullopt;
    if (*seconds >= 60 * kMillion || (hasHours && *minutes >= 3600 * kMillion)) return std::nullopt;
    return *hours + *minutes + *seconds;
}

std::optional<int64_t> parsePositive(std::string_view text) {
    if (text.find(':') != std::string_view::npos) return parseClock(text);
    const size_t end = text.find_first_not_of("0123456789.");
    if (end != std::string_view::npos) {
        for (const Unit& unit : kUnits)
            if (text.substr(end) == unit.name) return parseAmount(text.substr(0, end), unit.us);
        return std::nullopt;
    }
    const auto bare = digits(text);
    return bare && (*bare == 0 || *bare >= kFewestBareMicroseconds) ? bare : std::nullopt;
}

}  // namespace

std::optional<int64_t> parseTime(const std::string& text) {
    const bool isNegative = !text.empty() && text[0] == '-';
    const auto us = parsePositive(std::string_view(text).substr(isNegative ? 1 : 0));
    return us && isNegative ? -*us : us;
}

std::string noTimeBecause(const std::string& text) {
    if (!text.empty() && text.find_first_not_of("-0123456789.") == std::string::npos && parseTime(text + "s"))
        return fmt::format("{0} has no unit: {0}s are seconds, {0}us microseconds", text);
    return fmt::format("\"{}\" is no time; times are 5s, 1:30, 00:01:30.5 or 5000000us, for instance", text);
}

}  // namespace mkvx
