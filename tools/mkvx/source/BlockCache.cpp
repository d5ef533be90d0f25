#include "source/BlockCache.h"

#include <algorithm>

namespace mkvx {

size_t BlockCache::slotsFor(size_t blockSize, uint64_t capacity) {
    return std::max<size_t>(size_t(capacity / blockSize) / kWays, 1) * kWays;
}

size_t BlockCache::tableBytes(size_t slots) {
    return sizeof(Table) + (slots - 1) * sizeof(Slot);
}

BlockCache::BlockCache(size_t blockSize, uint64_t capacity, Keeps keeps)
    : mBlockSize(blockSize),
      mSlots(slotsFor(blockSize, capacity)),
      mMemory(tableBytes(mSlots) + (keeps == Keeps::kBytes ? mSlots * blockSize : 0)),
      mKeepsBytes(keeps == Keeps::kBytes) {}

BlockCache::Slot* BlockCache::setOf(uint64_t number) const {
    return static_cast<Table*>(mMemory.get())->slots + number % (mSlots / kWays) * kWays;
}

BlockCache::Slot* BlockCache::slotOf(uint64_t number) const {
    Slot* const set = setOf(number);
    Slot* const found =
        std::find_if(set, set + kWays, [&](const Slot& slot) { return slot.key == number + 1; });
    return found == set + kWays ? nullptr : found;
}

BlockCache::Slot* BlockCache::begunSlotOf(uint64_t number) const {
    Slot* const set = setOf(number);
    Slot* const found = std::find_if(
        set, set + kWays, [&](const Slot& slot) { return slot.key == 0 && slot.size == number + 1; });
    return found == set + kWays ? nullptr : found;
}

uint8_t* BlockCache::bytesOf(const Slot& slot) const {
    auto* const table = static_cast<Table*>(mMemory.get());
    if (!mKeepsBytes) return nullptr;
    return static_cast<uint8_t*>(mMemory.get()) + tableBytes(mSlots) +
           size_t(&slot - table->slots) * mBlockSize;
}

std::optional<BlockCache::Block> BlockCache::find(uint64_t number) {
    Slot* const slot = slotOf(number);
    if (slot == nullptr) return std::nullopt;
    slot->lastUse = ++static_cast<Table*>(mMemory.get())->clock;
    return Block{bytesOf(*slot), size_t(slot->size)};
}

uint8_t* BlockCache::begin(uint64_t number) {
    Slot* const set = setOf(number);
    Slot* slot = begunSlotOf(number);  // left by somebody who did not finish
    if (slot == nullptr)
        slot = std::min_element(set, set + kWays,
                                [](const Slot& a, const Slot& b) { return a.lastUse < b.lastUse; });
    // Free, but the newest: the next begin() takes another one. A child that ends here leaves no half block.
    slot->key = 0;
    slot->size = number + 1;
    slot->lastUse = ++static_cast<Table*>(mMemory.get())->clock;
    return bytesOf(*slot);
}

void BlockCache::finish(uint64_t number, size_t size) {
    Slot* const slot = begunSlotOf(number);
    if (slot == nullptr) return;
    slot->size = size;
    slot->key = number + 1;
}

BlockCache::Run BlockCache::missingRun(uint64_t first, uint64_t last) {
    const uint64_t most = std::max<uint64_t>(mSlots / 2, 1);
    Run run{first, 1};
    while (run.count < most && run.first + run.count <= last && slotOf(run.first + run.count) == nullptr)
        ++run.count;
    return run;
}

}  // namespace mkvx
