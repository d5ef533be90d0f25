// What stands for a file on the command line, as a byte source: a path; "-" for standard input, which is
// spooled first; or a URL that begins with http:// or https://.
#pragma once
#include <media/stagefright/DataSource.h>
#include <string>

#include "source/Options.h"

namespace mkvx {

// Without the faults of `options`; no read is served after an interruption. Throws FileFailure.
android::sp<android::DataSource> openBytes(const std::string& path, const SourceOptions& options);

// openBytes() for somebody who parses the same file several times over: what was read is not asked for again
// (CachedSource.h). A URL's blocks are kept anyway. Throws FileFailure.
android::sp<android::DataSource> openCached(const std::string& path, const SourceOptions& options);

// The source itself when there is nothing to go wrong.
android::sp<android::DataSource> withFaults(const android::sp<android::DataSource>& source,
                                            const FaultOptions& faults);

// openBytes() with the faults of `options`. Throws FileFailure.
android::sp<android::DataSource> openSource(const std::string& path, const SourceOptions& options);

bool isUrl(const std::string& path);
bool isStandardInput(const std::string& path);

}  // namespace mkvx
