#include "elements/OpenDocument.h"

#include "base/Failure.h"
#include "source/MatroskaSource.h"

namespace mkvx {

std::unique_ptr<Document> openDocument(const std::string& path, const SourceOptions& options) {
    auto document = std::make_unique<Document>(openMatroska(path, options));
    if (!document->isReadable())
        throw FileFailure(path, "the plug-in reads no document from it (see mkvx tree)");
    return document;
}

}  // namespace mkvx
