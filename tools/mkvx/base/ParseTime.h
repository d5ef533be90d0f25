// Times as people give them.
#pragma once
#include <cstdint>
#include <optional>
#include <string>

namespace mkvx {

// Below this a bare number may be meant as seconds.
constexpr int64_t kFewestBareMicroseconds = 100000;

// Microseconds of "5s", "0.5s", "500ms", "5000000us", "2min", "1h", "1:30" or "00:01:30.500", all of them
// with
// '-' in front for a negative time. A bare number is microseconds, from kFewestBareMicroseconds on. Nothing
// where the text is none of these, is finer than a microsecond or does not fit.
std::optional<int64_t> parseTime(const std::string& text);

// Why parseTime() has nothing for this text: a clause for an error sentence, with what may have been meant.
std::string noTimeBecause(const std::string& text);

}  // namespace mkvx
