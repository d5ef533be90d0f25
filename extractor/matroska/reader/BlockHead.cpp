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

// An element of known size, whose header is at hand.
bool TakeElement(const HeldBytes& bytes, PlainBlock* block) {
    const unsigned idLength = bytes.size == 0 ? 0 : IdLength(bytes.data[0]);
    if (idLength == 0 || bytes.size <= idLength) return false;
    const uint8_t* const size = bytes.data + idLength;
    const unsigned sizeLength = SizeLength(*size);
    if (sizeLength == 0 || bytes.size < idLength + sizeLength) return false;
    block->element.id = static_cast<uint32_t>(AppendBigEndian(0, bytes.data, idLength));
    block->element.size = SizeValue(size, sizeLength);
    block->element.hasUnknownSize = false;
    block->headerStart = bytes.position;
    block->dataStart = bytes.position + idLength + sizeLength;
    return block->element.size != UnknownSizeMarker(sizeLength);
}

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

int64_t SignExtended(uint64_t value, uint64_t size) {
    const unsigned shift = 64 - 8 * static_cast<unsigned>(size);
    return static_cast<int64_t>(value << shift) >> shift;
}

constexpr bool IsIdle(uint32_t id) {
    return id == id::kVoid || id == id::kBlockAdditions || id == id::kDiscardPadding;
}

// One child of a group whose bytes are all at hand.
bool TakeGroupChild(const ElementHeader& element, const HeldBytes& payload, BlockHead* head, bool* hasBlock) {
    uint64_t number = 0;
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
            head->hasReference = TakeNumber(payload, element.size, &number);
            head->reference = head->hasReference ? SignExtended(number, element.size) : 0;
            return head->hasReference;
        default:
            return IsIdle(element.id);
    }
}

bool TakeGroup(HeldBytes left, BlockHead* head) {
    *head = BlockHead();
    bool hasBlock = false;
    PlainBlock child;
    while (left.size != 0) {  // bounded: every child has a header
        if (!TakeElement(left, &child)) return false;
        const HeldBytes payload = left.Behind(child.HeaderSize());
        if (child.element.size > payload.size) return false;
        if (!TakeGroupChild(child.element, payload, head, &hasBlock)) return false;
        left = payload.Behind(static_cast<uint32_t>(child.element.size));
    }
    return hasBlock;
}

}  // namespace

BlockHead BlockHead::Of(const BlockGroup& group) {
    BlockHead head = OfSimpleBlock(group.Block.Header());
    head.duration = group.BlockDuration.Get();
    head.reference = group.ReferenceBlock.Get();
    head.hasReference = group.ReferenceBlock.IsSet();
    head.hasDuration = group.BlockDuration.IsSet();
    return head;
}

// The key-frame bit of a SimpleBlock speaks from here on as the absence of a reference does in a group.
BlockHead BlockHead::OfSimpleBlock(const BlockHeader& header) {
    const bool hasReference = (header.flags & kKeyFrameFlag) == 0;
    return BlockHead{header, 0, 0, hasReference, false, header.Lacing() == kLacingNone, 0, 0};
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
    if (!TakeElement(bytes, block)) return false;
    const HeldBytes payload = bytes.Behind(block->HeaderSize());
    if (block->element.id == id::kSimpleBlock) {
        BlockHeader header;
        if (!TakeHeader(payload, block->element.size, &header)) return false;
        block->head = BlockHead::OfSimpleBlock(header);
        block->head.LookAtLacing(payload.Behind(kShortBlockHeader));
        return true;
    }
    if (block->element.id != id::kBlockGroup || block->element.size > payload.size) return false;
    return TakeGroup(payload.Front(static_cast<uint32_t>(block->element.size)), &block->head);
}

}  // namespace MatroskaExtReader
