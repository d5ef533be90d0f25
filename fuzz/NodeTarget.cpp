// Walking the elements of a file and reading their values: walks move forward within their parents, every way
// of walking finds the same elements, and a value is what its bytes say or is not set. Opening by pieces
// finds what opening by exact reads does.
//
// Front, 8 bytes: flags (4 every master is parsed whole into the model, 1 the length is unknown, 2 the model
// is parsed first, so that a Segment's children are looked up in the SeekHead); the most bytes a read gives,
// as a power of two (0: any); two bytes not used; an element ID whose first occurrence is looked for
// (big-endian).
#include <algorithm>
#include <cstring>
#include <vector>

#include "FuzzTarget.h"
#include "matroska/reader/MatroskaReader.h"
#include "support/FaultySource.h"
#include "support/ModelState.h"

namespace fuzz {

namespace {

namespace reader = MatroskaExtReader;
using android::sp;
using reader::CMatroskaNode;
using testing_support::Faults;
using testing_support::FaultySource;

constexpr size_t kFrontSize = 8;
constexpr unsigned kDeepest = 12;
constexpr size_t kMostNodes = 4096;

// A number of 1 to 8 bytes with a length marker; false when it is cut off or has none.
bool DecodeVint(const Bytes& file, uint64_t at, unsigned most, bool keepsMarker, uint64_t* value,
                unsigned* length) {
    if (at >= file.size()) return false;
    for (*length = 1; *length <= most; ++*length) {
        if ((file[at] & (0x100 >> *length)) != 0) break;
    }
    if (*length > most || at + *length > file.size()) return false;
    *value = keepsMarker ? file[at] : file[at] & (0xFF >> *length);
    for (unsigned i = 1; i < *length; ++i) *value = *value * 256 + file[at + i];
    return true;
}

class Walker {
  public:
    Walker(const Bytes& file, reader::CMatroskaFile* parsed) : mBytes(file), mFile(parsed) {}

    void Walk(const sp<CMatroskaNode>& parent, unsigned depth) {
        std::vector<sp<CMatroskaNode>> children;
        const sp<CMatroskaNode> cursor = parent->Child(0, true);
        bool more = cursor != nullptr;
        for (; more && mCount < kMostNodes; more = cursor->Next(false)) {
            ++mCount;
            CheckHeader(*parent, *cursor, children.empty() ? nullptr : children.back().get());
            children.push_back(cursor->Copy());
        }
        if (!more) CheckNavigation(parent, children);
        for (const sp<CMatroskaNode>& child : children) {
            CheckValue(child);
            const reader::ElementInfo* info = reader::FindElementInfo(child->Id());
            const bool isMaster = info != nullptr && info->type == reader::ElementType::kMaster;
            if (isMaster && depth < kDeepest && mCount < kMostNodes) Walk(child, depth + 1);
        }
    }

  private:
    void CheckHeader(const CMatroskaNode& parent, const CMatroskaNode& node,
                     const CMatroskaNode* before) const {
        Require(node.IsValid(), "a walk stands on elements only");
        // What a damaged Segment is searched for may lie behind it; such an element has nothing inside.
        const bool isFound = parent.Id() == reader::id::kSegment && node.HeaderStart() >= parent.End();
        // The first child's header is read wherever the parent's own parent ends.
        Require(node.HeaderStart() >= parent.DataStart() &&
                    (isFound || before == nullptr || node.HeaderStart() < parent.End()),
                "a child begins within its parent");
        Require(before == nullptr || node.HeaderStart() > before->HeaderStart(), "a walk moves forward");
        Require(node.DataStart() > node.HeaderStart() + 1 && node.DataStart() <= node.HeaderStart() + 12,
                "a header has 2 to 12 bytes");
        Require(node.End() <= parent.End(), "navigation does not leave the parent");
        uint64_t id, size;
        unsigned idLength, sizeLength;
        Require(DecodeVint(mBytes, node.HeaderStart(), 4, true, &id, &idLength), "the ID can be read");
        Require(DecodeVint(mBytes, node.HeaderStart() + idLength, 8, false, &size, &sizeLength),
                "the size can be read");
        Require(node.Id() == id && node.DataStart() == node.HeaderStart() + idLength + sizeLength,
                "the header says what its bytes say");
        const bool isUnknown = size == (uint64_t{1} << (7 * sizeLength)) - 1;
        Require(node.HasUnknownSize() == isUnknown, "all value bits set is an unknown size");
        if (!isUnknown) {
            Require(node.Size() == size, "the size is what its bytes say");
        } else if (mFile->HasKnownLength()) {
            Require(node.Size() == mFile->Length() - node.DataStart(),
                    "an unknown size reaches to the file's end");
        }
    }

    // The other ways of walking find what the plain walk found.
    void CheckNavigation(const sp<CMatroskaNode>& parent,
                         const std::vector<sp<CMatroskaNode>>& children) const {
        std::vector<uint64_t> blocks;
        for (const auto& child : children) {
            if (child->Id() == reader::id::kBlockGroup || child->Id() == reader::id::kSimpleBlock) {
                blocks.push_back(child->HeaderStart());
            }
        }
        std::vector<uint64_t> found;
        const sp<CMatroskaNode> block = parent->GetFirstBlock();
        for (bool more = block != nullptr; more; more = block->NextBlock())
            found.push_back(block->HeaderStart());
        Require(found == blocks, "the block walk finds every block");
        if (children.empty()) return;

        const uint32_t wanted = children[children.size() / 2]->Id();
        std::vector<uint64_t> same;
        for (const auto& child : children) {
            if (child->Id() == wanted) same.push_back(child->HeaderStart());
        }
        if (parent->FindPos(wanted, 0) != 0 && parent->Id() == reader::id::kSegment)
            return;  // the SeekHead answers
        found.clear();
        const sp<CMatroskaNode> node = parent->Child(wanted, true);
        for (bool more = node != nullptr; more; more = node->Next(true)) found.push_back(node->HeaderStart());
        Require(found == same, "the walk by ID finds every element of that ID");
    }

    bool Has(const CMatroskaNode& node, uint64_t size) const {
        return node.DataStart() <= mBytes.size() && size <= mBytes.size() - node.DataStart();
    }

    void CheckValue(const sp<CMatroskaNode>& node) const {
        const reader::ElementInfo* info = reader::FindElementInfo(node->Id());
        if (info == nullptr) return;
        mFile->SeekTo(node->DataStart());
        switch (info->type) {
            case reader::ElementType::kUint:
                return CheckNumber<reader::CUInt>(node, node->Size());
            case reader::ElementType::kInt:
            case reader::ElementType::kDate:
                return CheckNumber<reader::CInt>(node, 8);
            case reader::ElementType::kFloat:
                return CheckNumber<reader::CFloat>(node, 8);
            case reader::ElementType::kAnsi:
                return CheckBytes<reader::CANSI>(node, 0);
            case reader::ElementType::kUtf8:
                return CheckBytes<reader::CUTF8>(node, 1);
            case reader::ElementType::kBinary:
                return CheckBytes<reader::ByteBuffer>(node, 0);
            case reader::ElementType::kId: {
                reader::CID value;
                (void)value.Parse(node.get());
                return;
            }
            case reader::ElementType::kMaster:
                return;
        }
    }

    template <typename T>
    void CheckNumber(const sp<CMatroskaNode>& node, uint64_t longest) const {
        T value;
        const bool isRead = !reader::Failed(value.Parse(node.get()));
        Require(value.IsSet() == isRead && (isRead || value.Get() == 0), "a failed number is 0 and not set");
        Require(!isRead || (node->Size() <= longest && Has(*node, node->Size())),
                "a number is read where its bytes are there");
    }

    static const uint8_t* BytesOf(const reader::ByteBuffer& value) { return value.data(); }
    template <typename T>
    static const void* BytesOf(const T& value) {
        return value.c_str();
    }

    template <typename T>
    void CheckBytes(const sp<CMatroskaNode>& node, size_t extra) const {
        T value;
        const bool isRead = !reader::Failed(value.Parse(node.get()));
        if (!isRead || !Has(*node, node->Size())) return;
        Require(value.size() == node->Size() + extra, "bytes have their element's length");
        Require(node->Size() == 0 ||
                    std::memcmp(BytesOf(value), mBytes.data() + node->DataStart(), node->Size()) == 0,
                "the element's bytes");
    }

    const Bytes& mBytes;
    reader::CMatroskaFile* mFile;
    size_t mCount = 0;
};

// The model with all that opening leaves out: Clusters with their blocks, chapters and attachments.
void ParseWhole(const sp<CMatroskaNode>& root) {
    const sp<CMatroskaNode> node = root->Child(reader::id::kSegment, true);
    if (node == nullptr) return;
    reader::Segment model;
    (void)model.Parse(node.get());
    for (const auto& chapters : model.Chapters) {
        for (const auto& edition : chapters->Editions) {
            const uint64_t uid = edition->Atoms.isEmpty() ? 1 : edition->Atoms[0]->ChapterUID.Get();
            reader::ChapterAtom* found = edition->FindChapterAtom(uid);
            Require(found == nullptr || found->ChapterUID.Get() == uid, "the atom that was asked for");
            Require(found != nullptr || edition->Atoms.isEmpty(), "an atom that is there is found");
        }
    }
    for (sp<CMatroskaNode> cluster = node->Child(reader::id::kCluster, true); cluster != nullptr;) {
        if (const auto group = cluster->Child(reader::id::kBlockGroup, true)) {
            const auto additions = group->Child(reader::id::kBlockAdditions, true);
            if (additions != nullptr) (void)reader::BlockAdditions().Parse(additions.get());
        }
        if (!cluster->Next(true)) break;
    }
}

}  // namespace

void RunNode(const uint8_t* data, size_t size) {
    if (size < kFrontSize) return;
    const Bytes file(data + kFrontSize, data + size);
    Faults faults;
    if ((data[0] & 1) != 0) faults.sizeStatus = android::ERROR_UNSUPPORTED;
    const sp<FaultySource> source = new FaultySource(file, faults);
    reader::CMatroskaFile parsed(source);
    const sp<CMatroskaNode> root = new CMatroskaNode(&parsed);
    if ((data[0] & 2) != 0) (void)parsed.Parse(root.get());
    Walker(file, &parsed).Walk(root, 0);
    if ((data[0] & 4) != 0) ParseWhole(root);
    RequireEqual(testing_support::StateOf(new FaultySource(file, faults), false),
                 testing_support::StateOf(new FaultySource(file, faults), true), "what pieces find");
    const uint32_t wanted =
        uint32_t{data[4]} << 24 | uint32_t{data[5]} << 16 | uint32_t{data[6]} << 8 | data[7];
    if (wanted == 0) return;  // stands for any element
    if (const auto node = root->Child(wanted, true))
        Require(node->Id() == wanted, "the element that was asked for");
}

}  // namespace fuzz
