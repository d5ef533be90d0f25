// A list that stays bounded however much is put into it: when it is full, every other item goes, and from
// then on only every 2nd, 4th, 8th ... item is kept. What is left is spread evenly over all that came.
//
// Plain container; no thread rules.
#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

namespace mkvx {

template <typename T>
class Thinned {
  public:
    // Keeps between half of `most` and `most` items once there are that many; `most` is at least 2.
    explicit Thinned(size_t most = 4096) : mMost(most < 2 ? 2 : most) {}

    void add(const T& item) {
        if (mCount++ % mStride != 0) return;
        if (mKept.size() == mMost) {
            halve();
            if ((mCount - 1) % mStride != 0) return;
        }
        mKept.push_back(item);
    }

    const std::vector<T>& kept() const { return mKept; }
    // How many came.
    uint64_t count() const { return mCount; }
    // One of so many was kept; 1: all.
    uint64_t stride() const { return mStride; }

  private:
    void halve() {
        size_t left = 0;
        for (size_t i = 0; i < mKept.size(); i += 2) mKept[left++] = mKept[i];
        mKept.resize(left);
        mStride *= 2;
    }

    size_t mMost;
    std::vector<T> mKept;
    uint64_t mCount = 0, mStride = 1;
};

}  // namespace mkvx
