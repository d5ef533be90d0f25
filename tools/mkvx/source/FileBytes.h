// The byte sources that mkvx opens, with errors that say why a file cannot be read.
#pragma once
#include <media/stagefright/DataSource.h>
#include <string>

namespace mkvx {

// A file read with one system call per request, which is what a device's plain file source costs too; nothing
// is cached and no flags are reported. Throws FileFailure when the path is missing, unreadable, a folder or a
// pipe.
android::sp<android::DataSource> openFile(const std::string& path);

// Throws FileFailure, without opening it, when `path` names nothing or something that is neither a regular
// file nor a block device.
void requireFile(const std::string& path);

}  // namespace mkvx
