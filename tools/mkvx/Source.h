// The byte sources that mkvx opens, with errors that say why a file cannot be read.
#pragma once
#include <media/stagefright/DataSource.h>
#include <string>

#include "SourceOptions.h"

namespace mkvx {

// What stands for a file on the command line: a path; "-" for standard input, which is spooled first; or a
// URL with http:// or https://. The faults of `options` are not in it, see FaultySource. Throws FileFailure.
android::sp<android::DataSource> openBytes(const std::string& path, const SourceOptions& options);

// The same with the faults.
android::sp<android::DataSource> openSource(const std::string& path, const SourceOptions& options);

// A file read with one system call per request, which is what a device's plain file source costs too; nothing
// is cached and no flags are reported. Throws FileFailure when the path is missing, unreadable, a folder or a
// pipe.
android::sp<android::DataSource> openFile(const std::string& path);

// Throws FileFailure, without opening it, when `path` names nothing or something that is neither a regular
// file nor a block device.
void requireFile(const std::string& path);

bool isUrl(const std::string& path);
bool isStandardInput(const std::string& path);

}  // namespace mkvx
