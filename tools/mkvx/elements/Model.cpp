#include "elements/Model.h"

#include <fmt/format.h>

namespace mkvx {
namespace {

using MatroskaExtReader::ElementInfo;
using MatroskaExtReader::ElementType;
namespace id = MatroskaExtReader::id;

constexpr uint32_t kSimpleTag = 0x67C8, kSlices = 0x8E;

// Elements that may stand below a second parent.
constexpr struct {
    uint32_t id, parent;
} kSecondParents[] = {
    {id::kChapterAtom, id::kChapterAtom},
    {kSimpleTag, kSimpleTag},
    {id::kTimeSlice, kSlices},
};

}  // namespace

std::string idText(uint32_t id) {
    return fmt::format("0x{:X}", id);
}

std::string nameOf(const Element& element) {
    return element.info != nullptr ? element.info->name : "unknown ID " + idText(element.id);
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
