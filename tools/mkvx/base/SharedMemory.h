// Memory that a forked child and its parent both see, zeroed at first: what a child that tries a file out has
// fetched and learnt is not lost with it. There is no lock in it: the parent waits while the child works.
#pragma once
#include <sys/mman.h>
#include <cstddef>
#include <new>

namespace mkvx {

class SharedMemory {
  public:
    // Pages are taken as they are touched. Throws std::bad_alloc.
    explicit SharedMemory(size_t size)
        : mSize(size),
          mBytes(::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1,
                        0)) {
        if (mBytes == MAP_FAILED) throw std::bad_alloc();
    }
    ~SharedMemory() { ::munmap(mBytes, mSize); }
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    void* get() const { return mBytes; }

  private:
    size_t mSize;
    void* mBytes;
};

}  // namespace mkvx
