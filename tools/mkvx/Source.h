// The byte sources that mkvx opens, with errors that say why a file cannot be read.
#pragma once
#include <media/stagefright/DataSource.h>
#include <string>

namespace mkvx {

// A file read with one system call per request, which is what a device's plain file source costs too; nothing
// is cached and no flags are reported. Throws FileFailure when the path is missing, unreadable, a folder or a
// pipe.
android::sp<android::DataSource> openFile(const std::string& path);

}  // namespace mkvx
