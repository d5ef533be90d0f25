// Two builds of the plug-in on one file, each in a process of its own, side by side.
#pragma once
#include <string>

#include "compare/Model.h"
#include "source/Options.h"

namespace mkvx {

struct CompareOptions {
    std::string base, other;  // paths of the plug-ins; an empty base means the one beside this program
    size_t seeks = 16;        // a track
    double timeLimit = 600;   // seconds a file
    SourceOptions source;
};

// Keeps no more than a line of each. Throws FileFailure when the file or a plug-in cannot be used or the time
// is over, and Interrupted. Call it while the process has a single thread.
ComparedFile compareFile(const std::string& path, const CompareOptions& options);

}  // namespace mkvx
