// What delivering a block needs to know of its header, of its group, and of its lacing header where that was
// at hand; and how it is read off bytes that are at hand, without a node.
#pragma once

#include <stdint.h>

#include "matroska/reader/MatroskaElements.h"
#include "matroska/reader/Node.h"
#include "matroska/reader/Pieces.h"

namespace MatroskaExtReader {

struct BlockHead {
    BlockHeader header;
    uint64_t duration;  // timecode units
    bool hasReference;  // which one is of no matter
    bool hasDuration;
    // The two numbers below are known. Without lacing they are 0.
    bool knowsFrames;
    uint8_t bytesBehind;   // the last frame, which fixed-size lacing gives to none
    uint16_t lacingBytes;  // in front of the first frame
    // What a walk by nodes would have asked of the file for it, where a stretch of the Cluster answered.
    uint16_t readsSpared;

    static BlockHead Of(const BlockGroup& group);
    static BlockHead OfSimpleBlock(const BlockHeader& header);
    void Fill(BlockGroup& group) const {
        group.Restart(header);
        if (hasReference) group.ReferenceBlock.Set(0);
        if (hasDuration) group.BlockDuration.Set(duration);
    }

    // Learns where the frames lie, unless their sizes are not all among `bytes`, the first of the payload, or
    // are no good: then reading the block tells.
    void LookAtLacing(const HeldBytes& bytes);
    uint64_t FramesPosition() const { return header.dataPosition + lacingBytes; }
    uint64_t FramesSize() const { return header.dataSize - lacingBytes - bytesBehind; }
};

// A block element that was taken off held bytes: its header, and where that and the payload begin.
struct PlainBlock {
    ElementHeader element;
    uint64_t headerStart, dataStart;
    BlockHead head;
};

// Reads the element that begins `bytes`, all of which lie within its Cluster. False for anything but a
// SimpleBlock, or a BlockGroup of the few elements that are usual there, whose numbers have their usual
// lengths and whose headers are all at hand: what is odd or missing is for a walk by nodes to judge, whose
// reads are noted in the head.
bool TakePlainBlock(const HeldBytes& bytes, PlainBlock* block);

// Reads the first block element of the Cluster whose payload begins `bytes`, and the Timecode in front of it,
// with the reads of a walk by nodes up to the block. False where something else is among them than a walk
// steps over, or where not all is at hand.
bool TakePlainFront(const HeldBytes& bytes, PlainBlock* block, uint64_t* timecode, unsigned* reads);

}  // namespace MatroskaExtReader
