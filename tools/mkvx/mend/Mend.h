// Mending a file: the plan for all of its findings carried out, the result examined, and put in place only
// when it is better and nothing came that was not there.
#pragma once
#include "check/Run.h"
#include "mend/Model.h"

namespace mkvx {

struct MendOptions {
    std::string file, output;
    bool isDryRun = false;
    CheckRunOptions check;
};

// Throws FileFailure when the file is none that could be mended, the output cannot be written, or no program
// is there that could do it; Interrupted, with nothing written. Call it while the process has a single
// thread.
MendReport mendFile(const ExtractorPlugin& plugin, const MendOptions& options);

}  // namespace mkvx
