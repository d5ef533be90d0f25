#include "matroska/reader/PlainCues.h"

namespace MatroskaExtReader {

namespace {

// The header of the next child of a master that ends at `end`, within which the child has to lie.
inline bool TakeChild(CountedBytes& ahead, const uint8_t* end, ElementHeader* child) {
    const HeldBytes left = {ahead.next, static_cast<uint32_t>(ahead.end - ahead.next), 0};
    unsigned reads = 0;
    const uint32_t length = TakeHeldHeader(left, child, &reads);
    if (length == 0) return false;
    ahead.Pass(length, reads);
    return ahead.next <= end && child->size <= static_cast<uint64_t>(end - ahead.next);
}

// The number of `size` bytes, 1 to 8, at `bytes`, behind which there are `left` in all.
inline uint64_t NumberAt(const uint8_t* bytes, uint64_t left, unsigned size) {
    return left < 8 ? AppendBigEndian(0, bytes, size) : FirstOfEight(bytes, size);
}

// The payload of a child: a number, or what nobody reads.
inline bool TakePayload(CountedBytes& ahead, uint64_t size, uint64_t* number) {
    if (number == nullptr) {
        ahead.Skip(size);
        return true;
    }
    if (size > 8) return false;
    *number = 0;
    if (size == 0) return true;
    *number = NumberAt(ahead.next, ahead.end - ahead.next, static_cast<unsigned>(size));
    ahead.Pass(static_cast<unsigned>(size), 1);
    return true;
}

inline bool StandsAside(uint32_t id) {
    return id == id::kCueBlockNumber || id == id::kCueCodecState || id == id::kCueReference;
}

inline bool TakePosition(CountedBytes& ahead, uint64_t size, CueTrackPosition* position) {
    const uint8_t* const end = ahead.next + size;
    ElementHeader child;
    do {  // bounded: every child has a header
        if (!TakeChild(ahead, end, &child) || StandsAside(child.id)) return false;
        if (!TakePayload(ahead, child.size, NumberOf(position, child.id))) return false;
    } while (ahead.next != end);
    return true;
}

// The children of a CuePoint of `size` bytes; their positions are appended.
inline bool TakePoint(CountedBytes& ahead, uint64_t size, Cue* cue, CuePoint* point) {
    const uint8_t* const end = ahead.next + size;
    ElementHeader child;
    do {  // bounded: every child has a header
        if (!TakeChild(ahead, end, &child)) return false;
        if (child.id == id::kCueTrackPositions) {
            CueTrackPosition position;
            if (!TakePosition(ahead, child.size, &position) || !cue->Positions.Append(position)) return false;
        } else if (!TakePayload(ahead, child.size, NumberOf(point, child.id))) {
            return false;
        }
    } while (ahead.next != end);
    return true;
}

}  // namespace

size_t TakePlainPoints(CountedBytes* bytes, size_t mostPoints, size_t mostPositions, Cue* cue,
                       PlainElement* last) {
    const size_t firstPosition = cue->Positions.size();
    CountedBytes ahead = *bytes;
    size_t taken = 0;
    for (; taken < mostPoints; ++taken) {  // bounded by the bytes
        const CountedBytes before = ahead;
        const size_t positions = cue->Positions.size();
        ElementHeader header;
        CuePoint point;
        point.FirstPosition = static_cast<uint32_t>(positions);
        bool isPlain = TakeChild(ahead, ahead.end, &header) && header.id == id::kCuePoint;
        const uint8_t* const data = ahead.next;
        isPlain = isPlain && TakePoint(ahead, header.size, cue, &point);
        point.PositionCount = static_cast<uint32_t>(cue->Positions.size() - positions);
        if (!isPlain || cue->Positions.size() - firstPosition > mostPositions || !cue->AddPoint(point)) {
            while (cue->Positions.size() > positions) cue->Positions.PopBack();
            ahead = before;
            break;
        }
        *last = {header, before.next, data};
    }
    *bytes = ahead;
    return taken;
}

}  // namespace MatroskaExtReader
