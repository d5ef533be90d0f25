// Options that several commands share. What receives a value holds the default and has to live until the
// command has run.
#pragma once
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

// Adds --format with exactly these names; `chosen` holds the first of them.
void addFormatOption(Arguments& command, Format& chosen, const FormatNames& names);
// Adds --track; `help` says what it is for, and the ways to name a track are added.
Argument addTrackOption(Arguments& command, std::optional<TrackChoice>& chosen, const std::string& help);
// Adds --progress line|json|off; `style` holds kLine.
void addProgressOption(Arguments& command, ProgressStyle& style);

}  // namespace mkvx
