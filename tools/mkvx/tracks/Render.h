// What the commands of this room print.
#pragma once
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "base/Format.h"
#include "device/Model.h"

namespace mkvx {

// kTable or kJson.
void renderInfo(const FileInfo& info, Format format, std::FILE* out);

// kTable or kJson (one object per file and line).
void renderSniff(const std::vector<SniffResult>& results, Format format, std::FILE* out);

// Prints units as they come, so that a listing of any length needs no memory.
class UnitWriter {
  public:
    virtual ~UnitWriter() = default;
    virtual void write(const Unit& unit) = 0;
    // Behind the last unit. Without it, JSON stays open: what broke off does not look whole.
    virtual void finish() {}
};

// What stands in front of the units is printed at once. `file` is the name that JSON tells.
std::unique_ptr<UnitWriter> makeUnitWriter(Format format, const std::string& file, std::FILE* out);

}  // namespace mkvx
