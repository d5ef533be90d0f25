// The assertion of the extractor: ends the process through the platform's assertion logger.
#pragma once

namespace android {

// Logs, as the platform's own CHECK would, that `condition` (its source text) did not hold, under the tag
// "MatroskaExtExtractor", and aborts. `line` is part of a text that crash reports are matched against: it is
// fixed per condition and is not this source file's line.
[[noreturn]] void FailCheck(const char* condition, int line);

}  // namespace android
