#include "check/Evidence.h"

#include <fmt/format.h>
#include <algorithm>

namespace mkvx {
namespace {

using android::sp;
using MatroskaExtReader::CMatroskaFile;
using MatroskaExtReader::CMatroskaNode;
using MatroskaExtReader::Failed;

std::string nameOf(uint32_t id) {
    const MatroskaExtReader::ElementInfo* info = MatroskaExtReader::FindElementInfo(id);
    return info != nullptr ? info->name : fmt::format("element {:X}", id);
}

std::vector<uint8_t> firstBytes(CMatroskaFile& file, uint64_t offset, uint64_t size) {
    file.SeekTo(offset);
    const uint64_t wanted = std::min({size, uint64_t{Evidence::kMostBytes}, file.LeftInFile()});
    std::vector<uint8_t> bytes(static_cast<size_t>(wanted));
    if (bytes.empty() || Failed(file.Read(bytes.data(), uint32_t(bytes.size())))) bytes.clear();
    return bytes;
}

Evidence describe(CMatroskaFile& file, const CMatroskaNode& node) {
    Evidence evidence;
    evidence.element = nameOf(node.Id());
    evidence.offset = node.HeaderStart();
    evidence.size = node.Size();
    evidence.bytes = firstBytes(file, node.DataStart(), node.Size());
    return evidence;
}

sp<CMatroskaNode> nodeAt(CMatroskaFile& file, uint64_t position) {
    const sp<CMatroskaNode> root = new CMatroskaNode(&file);
    file.SeekTo(position);
    return new CMatroskaNode(root.get());
}

sp<CMatroskaNode> lastChild(const CMatroskaNode& parent, uint32_t id) {
    const sp<CMatroskaNode> child = parent.Child(id, true);
    sp<CMatroskaNode> last;
    if (child == nullptr) return last;
    do {  // bounded: every step moves forward within the parent
        last = child->Copy();
    } while (child->Next(true));
    return last;
}

}  // namespace

Evidence evidenceAt(CMatroskaFile& file, uint64_t position) {
    const sp<CMatroskaNode> node = nodeAt(file, position);
    return node->IsValid() ? describe(file, *node) : bytesAt(file, position, Evidence::kMostBytes);
}

Evidence bytesAt(CMatroskaFile& file, uint64_t offset, uint64_t size) {
    Evidence evidence;
    evidence.offset = offset;
    evidence.size = size;
    evidence.bytes = firstBytes(file, offset, size);
    return evidence;
}

std::optional<Evidence> evidenceBelow(CMatroskaFile& file, uint64_t position,
                                      std::initializer_list<uint32_t> path) {
    sp<CMatroskaNode> node = nodeAt(file, position);
    if (!node->IsValid()) return std::nullopt;
    for (const uint32_t id : path) {
        node = lastChild(*node, id);
        if (node == nullptr) return std::nullopt;
    }
    return describe(file, *node);
}

Evidence evidenceBelowOr(CMatroskaFile& file, uint64_t position, std::initializer_list<uint32_t> path) {
    const std::optional<Evidence> below = evidenceBelow(file, position, path);
    return below ? *below : evidenceAt(file, position);
}

}  // namespace mkvx
