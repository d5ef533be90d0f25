// The assertion of the extractor: ends the process through the platform's assertion logger.
#pragma once

namespace android {

// Logs both texts under the tag "MatroskaExtExtractor", as the platform's own CHECK would, and aborts.
// `negated` is the condition that held and should not, `message` a text that crash reports are matched
// against: its path and line are fixed and not those of this source. Callers write both out, so that a search
// finds them.
[[noreturn]] void FailCheck(const char* negated, const char* message);

}  // namespace android
