#include "elements/Model.h"

namespace mkvx {

std::unique_ptr<Listing<TreeItem>> newTreeListing(Format format, const std::string& file,
                                                  std::optional<uint64_t> length, std::FILE* out) {
    switch (format) {
        case Format::kJsonLines:
            return std::make_unique<JsonLines<TreeItem>>(out);
        case Format::kJson:
            return std::make_unique<JsonList<TreeItem>>(openTreeJson(file, length), out);
        default:
            return newTextTree(length, out);
    }
}

}  // namespace mkvx
