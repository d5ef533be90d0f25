// Options that several commands share. What receives a value holds the default and has to live until the
// command has run.
#pragma once
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Format.h"
#include "base/Progress.h"
#include "cli/Arguments.h"
#include "device/TrackChoice.h"

namespace mkvx {

using FormatNames = std::vector<std::pair<std::string, Format>>;

// Adds --format with exactly these names, one of them "json", which --json is short for; `chosen` holds the
// first of them.
void addFormatOption(Arguments& command, Format& chosen, const FormatNames& names);
// Adds --track; `help` says what it is for, and the ways to name a track are added.
Argument addTrackOption(Arguments& command, std::optional<TrackChoice>& chosen, const std::string& help);
// Gets microseconds; says what is wrong with them, empty for nothing.
using TakeTime = std::function<std::string(int64_t us)>;
// Adds an option whose value is a time, written as ParseTime.h tells.
Argument addTimeOption(Arguments& command, const std::string& name, const TakeTime& take,
                       const std::string& help);
// Adds --progress line|json|off; `style` holds kLine.
void addProgressOption(Arguments& command, ProgressStyle& style);

}  // namespace mkvx
