// What a plug-in makes of a file, as lines of text: one a fact, so that two of them can be held side by side
// without being kept. Each begins with the digit of its Part.
//
// Run it in a child process: a plug-in may end the process, and no two of them are to share one.
#pragma once
#include <media/stagefright/DataSource.h>
#include <functional>
#include <string>

#include "compare/Model.h"

namespace mkvx {

// A line that no plug-in's answer looks like: what kept the probe from being made.
constexpr char kProbeFailed = '!';

// Called in the child: what reads a network is not shared either.
using OpenBytes = std::function<android::sp<android::DataSource>()>;

// Loads the plug-in at `plugin` and writes to the descriptor `out`: what it claims, which tracks with which
// metadata it offers, every unit of all of them, and where `seeks` seeks of each video and audio track land.
//
void probe(const std::string& plugin, const OpenBytes& openBytes, size_t seeks, int out);

}  // namespace mkvx
