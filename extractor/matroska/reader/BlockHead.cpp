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

// An element of known size whose header is at hand: how many bytes that has, else 0. Adds the reads of
// TakeHeader (ElementHeader.h) for it.
inline uint32_t TakeElement(const HeldBytes& bytes, ElementHeader* element, unsigned* reads) {
    const unsigned idLength = bytes.size == 0 ? 0 : IdLength(bytes.data[0]);
    if (idLength == 0 || bytes.size <= idLength) return 0;
    const uint8_t* const size = bytes.data + idLength;
    const unsigned sizeLength = SizeLength(*size);
    if (sizeLength == 0 || bytes.size < idLength + sizeLength) return 0;
    element->id = static_cast<uint32_t>(AppendBigEndian(0, bytes.data, idLength));
    element->size = SizeValue(size, sizeLength);
    element->hasUnknownSize = false;
    *reads += 1 + (idLength > 1) + (sizeLength > 1);
    return element->size != UnknownSizeMarker(sizeLength) ? idLength + sizeLength : 0;
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
        const uint32_t headerSize = TakeElement(left, &child, reads);
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

uint32_t TakePlainBlock(const HeldBytes& bytes, ElementHeader* element, BlockHead* head) {
    unsigned reads = 0;
    const uint32_t headerSize = TakeElement(bytes, element, &reads);
    if (headerSize == 0) return 0;
    const HeldBytes payload = bytes.Behind(headerSize);
    bool isTaken = false;
    if (element->id == id::kSimpleBlock) {
        isTaken = TakeSimpleBlock(payload, element->size, head);
        ++reads;
    } else if (element->id == id::kBlockGroup && element->size <= payload.size) {
        isTaken = TakeGroup(payload.Front(static_cast<uint32_t>(element->size)), head, &reads);
    }
    if (!isTaken) return 0;
    head->readsSpared = static_cast<uint16_t>(reads);  // a stretch has no more bytes
    return headerSize;
}

}  // namespace MatroskaExtReader
