#include "matroska/reader/ElementIds.h"

#include "matroska/reader/ElementTable.h"

namespace MatroskaExtReader {

const ElementInfo* ElementTable(size_t* count) {
    *count = kElementCount;
    return kElements;
}

const ElementInfo* FindElementInfo(uint32_t id) {
    for (const ElementInfo& row : kElements) {
        if (row.id == id) return &row;
    }
    return nullptr;
}

}  // namespace MatroskaExtReader
