// Where the parts of this installation lie that are no commands of their own.
#pragma once
#include <string>

namespace mkvx {

// The path of such a part: in the private folder of an installation, else where the build tree has it,
// relative to this program's own folder. Of several that are not there, the first.
std::string besideProgram(const std::string& name, const std::string& inBuildTree);

}  // namespace mkvx
