// Finding and loading the extractor plug-in.
#pragma once
#include <host/ExtractorPlugin.h>
#include <string>

namespace mkvx {

using android::host::ExtractorPlugin;

// `path` empty: the library that was built or installed together with this program. Throws FileFailure when
// there is none or when it lacks one of the four functions. The library stays loaded until the process ends.
ExtractorPlugin loadPlugin(const std::string& path);

}  // namespace mkvx
