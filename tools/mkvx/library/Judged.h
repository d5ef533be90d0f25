// The last result of each file in files that check has written.
#pragma once
#include <map>
#include <string>
#include <vector>

#include "library/Model.h"

namespace mkvx {

struct JudgedFiles {
    std::map<std::string, JudgedFile> byPath;
    uint64_t superseded = 0;
};

// A later result of a path takes the place of an earlier one. Throws FileFailure.
JudgedFiles readJudged(const std::vector<std::string>& resultFiles);

}  // namespace mkvx
