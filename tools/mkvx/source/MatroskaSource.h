// Byte sources for what is read with this program's own reader alone, without the plug-in.
#pragma once
#include <media/stagefright/DataSource.h>
#include <string>

#include "source/Options.h"

namespace mkvx {

// openSource() for a file that begins as every Matroska or WebM file does, with a small read-ahead. Throws
// FileFailure for another.
android::sp<android::DataSource> openMatroska(const std::string& path, const SourceOptions& options);

}  // namespace mkvx
