// What the plug-in's sniffer says about several files.
#pragma once
#include <string>
#include <vector>

#include "device/Session.h"

namespace mkvx {

struct SniffRun {
    std::vector<SniffResult> results;     // of the files that could be read, in their order
    std::vector<std::string> complaints;  // sentences, about the others and those that are not claimed
};

// An interruption ends it.
SniffRun sniffFiles(const ExtractorPlugin& plugin, const std::vector<std::string>& files,
                    const SourceOptions& source);

}  // namespace mkvx
