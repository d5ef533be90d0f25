// How much heap the process holds at most while a piece of code runs: every malloc, operator new included, of
// every thread and library, by what the allocator really set aside.
#pragma once

#include <cstddef>

namespace testing_support {

// Measures from its construction on, above what was held then. One at a time.
class HeapMeter {
  public:
    HeapMeter();
    size_t Peak() const;
    // The next Peak() is that from here on, above the same level.
    void Restart();
    size_t Held() const;  // now, above the level of construction

  private:
    long long mBase;
};

// While one lives, larger blocks are refused to every thread: all of them, or only the one with this number,
// counted from 0. A sanitizer's allocator cannot be made to do that, so plain builds only.
class RefusedAbove {
  public:
    static constexpr long kAll = -1;
    explicit RefusedAbove(size_t bytes, long which = kAll);
    ~RefusedAbove();
    // How many larger blocks were asked for.
    long Asked() const;
};

}  // namespace testing_support
