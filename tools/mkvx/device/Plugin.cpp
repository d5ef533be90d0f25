#include "device/Plugin.h"

#include <string>

#include "base/Failure.h"
#include "base/ProgramFolder.h"

namespace mkvx {
ExtractorPlugin loadPlugin(const std::string& path) {
    const std::string chosen =
        path.empty() ? besideProgram("libmatroska_ext.so", "../lib/libmatroska_ext.so") : path;
    ExtractorPlugin plugin;
    std::string error;
    if (!ExtractorPlugin::Load(chosen, &plugin, &error))
        throw FileFailure(
            chosen, "cannot be used as plug-in: " + error + " (--plugin takes the path of another one)");
    return plugin;
}

}  // namespace mkvx
