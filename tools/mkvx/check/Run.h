// Many examinations at once, each in a child of its own with a time limit.
#pragma once
#include <functional>
#include <vector>

#include "base/Progress.h"
#include "check/File.h"
#include "check/FolderWalk.h"

namespace mkvx {

struct CheckRunOptions {
    unsigned jobs = 1;
    double timeLimit = 60;  // seconds a file
    CheckDepth depth;
    SourceOptions source;
    ProgressStyle progress = ProgressStyle::kLine;
};

// `onResult` gets each file's place in the list and its result as soon as that is known. An interruption
// (SIGINT, SIGTERM) ends the children that run, and the function answers false. Call it while the process has
// a single thread.
bool checkFiles(const ExtractorPlugin& plugin, const std::vector<FoundFile>& files,
                const CheckRunOptions& options,
                const std::function<void(size_t place, CheckedFile checked)>& onResult);

}  // namespace mkvx
