#include "matroska/reader/BlockHead.h"

#include <string.h>

#include "matroska/reader/Lacing.h"
#include "matroska/reader/Vint.h"

namespace MatroskaExtReader {

namespace {

// What PassLacing asks of a source.
struct LacingBytes {
    HeldBytes left;

    uint64_t Position() const { return left.position; }
    bool Take(uint8_t* out, unsigned n) {
        if (n > left.size) return false;
        memcpy(out, left.data, n);
        left = left.Behind(n);
        return true;
    }
};

bool TakeHeader(const HeldBytes& bytes, uint64_t size, BlockHeader* header) {
    if (size < kShortBlockHeader || bytes.size < kShortBlockHeader) return false;
    return TakeShortHeader(bytes.data, bytes.position, bytes.position + size, header);
}

// A number of 1 to 8 bytes.
bool TakeNumber(const HeldBytes& bytes, uint64_t size, uint64_t* value) {
    if (size == 0 || size > sizeof(*value)) return false;
    *value = AppendBigEndian(0, bytes.data, static_cast<unsigned>(size));
    return true;
}

constexpr bool IsIdle(uint32_t id) {
    return id == id::kVoid || id == id::kBlockAdditions || id == id::kDiscardPadding;
}

// One child of a group whose bytes are all at hand.
bool TakeGroupChild(const ElementHeader& element, const HeldBytes& payload, BlockHead* head, bool* hasBlock) {
    uint64_t reference;
    switch (element.id) {
        case id::kBlock:
            if (*hasBlock || !TakeHeader(payload, element.size, &head->header)) return false;
            head->knowsFrames = head->header.Lacing() == kLacingNone;
            head->LookAtLacing(payload.Behind(kShortBlockHeader));
            *hasBlock = true;
            return true;
        case id::kBlockDuration:
            head->hasDuration = true;
            return TakeNumber(payload, element.size, &head->duration);
        case id::kReferenceBlock:
            head->hasReference = TakeNumber(payload, element.size, &reference);
            return head->hasReference;
        default:
            return IsIdle(element.id);
    }
}

bool TakeGroup(HeldBytes left, BlockHead* head, unsigned* reads) {
    *head = BlockHead();
    bool hasBlock = false;
    ElementHeader child;
    while (left.size != 0) {  // bounded: every child has a header
        const uint32_t headerSize = TakeHeldHeader(left, &child, reads);
        const HeldBytes payload = left.Behind(headerSize);
        if (headerSize == 0 || child.size > payload.size) return false;
        if (!TakeGroupChild(child, payload, head, &hasBlock)) return false;
        *reads += !IsIdle(child.id);
        left = payload.Behind(static_cast<uint32_t>(child.size));
    }
    return hasBlock;
}

bool TakeSimpleBlock(const HeldBytes& payload, uint64_t size, BlockHead* head) {
    BlockHeader header;
    if (!TakeHeader(payload, size, &header)) return false;
    *head = BlockHead::OfSimpleBlock(header);
    if (!head->knowsFrames) head->LookAtLacing(payload.Behind(kShortBlockHeader));
    return true;
}

// The block element at the front of `bytes`, whose header was taken with so many reads.
bool TakeBlock(const HeldBytes& bytes, uint32_t headerSize, unsigned reads, PlainBlock* block) {
    const HeldBytes payload = bytes.Behind(headerSize);
    const ElementHeader& element = block->element;
    bool isTaken = false;
    if (element.id == id::kSimpleBlock) {
        isTaken = TakeSimpleBlock(payload, element.size, &block->head);
        ++reads;
    } else if (element.id == id::kBlockGroup && element.size <= payload.size) {
        isTaken = TakeGroup(payload.Front(static_cast<uint32_t>(element.size)), &block->head, &reads);
    }
    block->head.readsSpared = static_cast<uint16_t>(reads);  // no more bytes are held than that
    block->headerStart = bytes.position;
    block->dataStart = payload.position;
    return isTaken;
}

}  // namespace

BlockHead BlockHead::Of(const BlockGroup& group) {
    BlockHead head = OfSimpleBlock(group.Block.Header());
    head.duration = group.BlockDuration.Get();
    head.hasReference = group.ReferenceBlock.IsSet();
    head.hasDuration = group.BlockDuration.IsSet();
    return head;
}

// The key-frame bit of a SimpleBlock speaks from here on as the absence of a reference does in a group.
BlockHead BlockHead::OfSimpleBlock(const BlockHeader& header) {
    const bool hasReference = (header.flags & kKeyFrameFlag) == 0;
    return BlockHead{header, 0, hasReference, false, header.Lacing() == kLacingNone, 0, 0, 0};
}

void BlockHead::LookAtLacing(const HeldBytes& bytes) {
    const uint64_t end = header.dataPosition + header.dataSize;
    LacingBytes lacing = {bytes};
    uint64_t framesSize;
    if (knowsFrames || bytes.size == 0 || !PassLacing(header.Lacing(), end, lacing, &framesSize)) return;
    const uint64_t lacingSize = lacing.Position() - header.dataPosition;
    const uint64_t behind = header.dataSize - lacingSize - framesSize;
    knowsFrames = lacingSize <= UINT16_MAX && behind <= UINT8_MAX;
    if (!knowsFrames) return;
    lacingBytes = static_cast<uint16_t>(lacingSize);
    bytesBehind = static_cast<uint8_t>(behind);
}

bool TakePlainBlock(const HeldBytes& bytes, PlainBlock* block) {
    unsigned reads = 0;
    const uint32_t headerSize = TakeHeldHeader(bytes, &block->element, &reads);
    return headerSize != 0 && TakeBlock(bytes, headerSize, reads, block);
}

bool TakePlainFront(const HeldBytes& bytes, PlainBlock* block, uint64_t* timecode, unsigned* reads) {
    bool hasTimecode = false;
    HeldBytes left = bytes;
    for (;;) {  // bounded: every element has a header
        unsigned childReads = 0;
        const uint32_t headerSize = TakeHeldHeader(left, &block->element, &childReads);
        const HeldBytes payload = left.Behind(headerSize);
        const ElementHeader& child = block->element;
        if (headerSize == 0) return false;
        if (IsBlockElement(child.id)) return hasTimecode && TakeBlock(left, headerSize, childReads, block);
        if (child.size > payload.size) return false;
        if (child.id == id::kClusterTimecode && !hasTimecode) {
            hasTimecode = TakeNumber(payload, child.size, timecode);
            if (!hasTimecode) return false;
            ++childReads;
        }
        *reads += childReads;
        left = payload.Behind(static_cast<uint32_t>(child.size));
    }
}

}  // namespace MatroskaExtReader
