// The document of a file that a command names.
#pragma once
#include <memory>
#include <string>

#include "device/Document.h"
#include "source/Options.h"

namespace mkvx {

// Throws FileFailure for a file that cannot be read or whose header the plug-in refuses.
std::unique_ptr<Document> openDocument(const std::string& path, const SourceOptions& options);

}  // namespace mkvx
