// Work that may end the process, tried in a child first.
//
// Some files make the plug-in stop the process that opens them: that is what a device's media process would
// suffer, and mkvx has to tell it instead of suffering it.
#pragma once
#include <functional>
#include <optional>
#include <string>

namespace mkvx {

// Runs `work` in a forked child, with its log and stderr silenced. Nothing: the child came through. Otherwise
// what stopped it: the assertion's text, or the signal. Call it while the process has a single thread.
std::optional<std::string> whatStops(const std::function<void()>& work);

}  // namespace mkvx
