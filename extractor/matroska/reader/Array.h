// A growing array for what a file's content makes the reader keep: where memory is refused it says so and
// stays as it was. (A std::vector would end the process, which has no exceptions.)
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <memory>
#include <new>
#include <utility>

namespace MatroskaExtReader {

template <typename T>
class Array {
  public:
    Array() {}
    ~Array() { clear(); }
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;

    bool empty() const { return mSize == 0; }
    size_t size() const { return mSize; }
    // How many items there is memory for.
    size_t room() const { return mRoom; }
    const T* data() const { return Items(); }
    const T& operator[](size_t i) const { return Items()[i]; }
    T& operator[](size_t i) { return Items()[i]; }
    const T& front() const { return Items()[0]; }
    T& front() { return Items()[0]; }
    const T& back() const { return Items()[mSize - 1]; }
    T& back() { return Items()[mSize - 1]; }
    const T* begin() const { return Items(); }
    T* begin() { return Items(); }
    const T* end() const { return Items() + mSize; }
    T* end() { return Items() + mSize; }

    // False where memory is refused.
    bool Append(T&& item) {
        if (!MakeRoom()) return false;
        new (Items() + mSize++) T(std::move(item));
        return true;
    }
    bool Append(const T& item) {
        if (!MakeRoom()) return false;
        new (Items() + mSize++) T(item);
        return true;
    }
    // Room for `count` items in all.
    bool Reserve(size_t count) {
        if (count <= mRoom) return true;
        if (count > SIZE_MAX / sizeof(Slot)) return false;
        std::unique_ptr<Slot[]> grown(new (std::nothrow) Slot[count]);
        if (grown == nullptr) return false;
        T* to = reinterpret_cast<T*>(grown.get());
        for (size_t i = 0; i < mSize; ++i) {
            new (to + i) T(std::move(Items()[i]));
            Items()[i].~T();
        }
        mSlots = std::move(grown);
        mRoom = count;
        return true;
    }
    void PopBack() { Items()[--mSize].~T(); }
    void PopFront(size_t count = 1) {
        for (size_t i = count; i < mSize; ++i) Items()[i - count] = std::move(Items()[i]);
        for (; count != 0; --count) PopBack();
    }
    // Keeps the room.
    void clear() {
        while (mSize != 0) PopBack();
    }
    void swap(Array& other) {
        mSlots.swap(other.mSlots);
        std::swap(mSize, other.mSize);
        std::swap(mRoom, other.mRoom);
    }

  private:
    static constexpr size_t kFirstRoom = 4;

    bool MakeRoom() { return mSize < mRoom || Reserve(mRoom == 0 ? kFirstRoom : 2 * mRoom); }

    // Memory for one item, which is not made before it is appended.
    struct Slot {
        alignas(T) unsigned char bytes[sizeof(T)];  // NOLINT(bugprone-sizeof-expression): T may be a pointer
    };
    T* Items() { return reinterpret_cast<T*>(mSlots.get()); }
    const T* Items() const { return reinterpret_cast<const T*>(mSlots.get()); }

    std::unique_ptr<Slot[]> mSlots;
    size_t mSize = 0;
    size_t mRoom = 0;
};

}  // namespace MatroskaExtReader
