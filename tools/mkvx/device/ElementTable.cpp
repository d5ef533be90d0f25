#include "device/ElementTable.h"

#include <fmt/format.h>
#include <unordered_map>

namespace mkvx {
namespace {

constexpr uint32_t kSimpleTag = 0x67C8, kSlices = 0x8E;

// Elements that may stand below a second parent.
constexpr struct {
    uint32_t id, parent;
} kSecondParents[] = {
    {id::kChapterAtom, id::kChapterAtom},
    {kSimpleTag, kSimpleTag},
    {id::kTimeSlice, kSlices},
};

// A walk asks for every element, so the table is not gone through each time.
std::unordered_map<uint32_t, const ElementInfo*> rowsById() {
    std::unordered_map<uint32_t, const ElementInfo*> rows;
    for (const ElementInfo& row : ElementRows()) rows.emplace(row.id, &row);  // of several the first
    return rows;
}

}  // namespace

const ElementInfo* ElementRows::begin() const {
    size_t count = 0;
    return MatroskaExtReader::ElementTable(&count);
}

const ElementInfo* findElement(uint32_t id) {
    static const auto rows = rowsById();
    const auto row = rows.find(id);
    return row == rows.end() ? nullptr : row->second;
}

std::string idText(uint32_t id) {
    return fmt::format("0x{:X}", id);
}

std::string elementName(uint32_t id) {
    const ElementInfo* info = findElement(id);
    return info != nullptr ? info->name : "unknown ID " + idText(id);
}

std::string elementKind(uint32_t id) {
    const ElementInfo* info = findElement(id);
    return info != nullptr ? info->name : kUnknownElements;
}

bool isMaster(const ElementInfo* info) {
    return info != nullptr && info->type == ElementType::kMaster;
}

const char* typeName(const ElementInfo* info) {
    if (info == nullptr) return "unknown";
    switch (info->type) {
        case ElementType::kMaster:
            return "master";
        case ElementType::kUint:
            return "uint";
        case ElementType::kInt:
            return "int";
        case ElementType::kFloat:
            return "float";
        case ElementType::kAnsi:
            return "string";
        case ElementType::kUtf8:
            return "utf-8";
        case ElementType::kBinary:
            return "binary";
        case ElementType::kDate:
            return "date";
        case ElementType::kId:
            return "ID";
    }
    return "";
}

bool belongsIn(const ElementInfo* info, uint32_t parent) {
    if (info == nullptr || info->id == id::kVoid || info->id == id::kCrc32 || info->parent == parent)
        return true;
    for (const auto& row : kSecondParents)
        if (row.id == info->id && row.parent == parent) return true;
    return false;
}

}  // namespace mkvx
