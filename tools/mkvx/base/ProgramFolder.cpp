#include "base/ProgramFolder.h"

#include <unistd.h>
#include <climits>

namespace mkvx {
namespace {

std::string folderOfThisProgram() {
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0 || size_t(length) == sizeof path) return ".";
    const std::string program(path, size_t(length));
    return program.substr(0, program.rfind('/'));
}

}  // namespace

std::string besideProgram(const std::string& name, const std::string& inBuildTree) {
    const std::string folder = folderOfThisProgram() + "/";
    const std::string installed = folder + MKVX_PLUGIN_FOLDER "/" + name, built = folder + inBuildTree;
    if (::access(installed.c_str(), R_OK) != 0 && ::access(built.c_str(), R_OK) == 0) return built;
    return installed;
}

}  // namespace mkvx
