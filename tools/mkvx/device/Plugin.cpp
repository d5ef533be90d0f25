#include "device/Plugin.h"

#include <unistd.h>
#include <climits>
#include <string>
#include <vector>

#include "base/Failure.h"

namespace mkvx {
namespace {

constexpr char kLibraryName[] = "libmatroska_ext.so";

std::string folderOfThisProgram() {
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0 || size_t(length) == sizeof path) return ".";
    const std::string program(path, size_t(length));
    return program.substr(0, program.rfind('/'));
}

// Where the plug-in lies beside the program: as it is installed, and in the build tree.
std::vector<std::string> candidates() {
    const std::string folder = folderOfThisProgram() + "/";
    return {folder + MKVX_PLUGIN_FOLDER "/" + kLibraryName, folder + "../lib/" + kLibraryName};
}

std::string findPlugin() {
    const std::vector<std::string> paths = candidates();
    for (const std::string& path : paths)
        if (::access(path.c_str(), R_OK) == 0) return path;
    return paths.front();
}

}  // namespace

ExtractorPlugin loadPlugin(const std::string& path) {
    const std::string chosen = path.empty() ? findPlugin() : path;
    ExtractorPlugin plugin;
    std::string error;
    if (!ExtractorPlugin::Load(chosen, &plugin, &error))
        throw FileFailure(
            chosen, "cannot be used as plug-in: " + error + " (--plugin takes the path of another one)");
    return plugin;
}

}  // namespace mkvx
