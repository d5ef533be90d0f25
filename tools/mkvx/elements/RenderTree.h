// Listings of the element tree, printed as the items come.
#pragma once
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "base/Format.h"
#include "elements/Model.h"

namespace mkvx {

class TreeWriter {
  public:
    virtual ~TreeWriter() = default;
    virtual void write(const TreeItem& item) = 0;
    // Nothing more comes.
    virtual void finish() {}
};

// kTable (text), kJson (one object) or kJsonLines; what stands in front of the items is printed at once.
// `length` is the file's, where it is known.
std::unique_ptr<TreeWriter> makeTreeWriter(Format format, const std::string& file,
                                           std::optional<uint64_t> length, std::FILE* out);

}  // namespace mkvx
