// The reader's owning reference and its lists of repeated master elements.
#pragma once

#include <utils/RefBase.h>
#include <utils/Vector.h>

#include <memory>
#include <new>

#include "matroska/reader/ResultCodes.h"

namespace MatroskaExtReader {

class CMatroskaNode;

// An owning reference: a strong count on a RefBase.
template <typename T>
using AutoPtr = android::sp<T>;

// A list that is traversed by one-based positions: 0 is the end, and also the start of an empty list.
template <typename T>
class CList : public android::Vector<T> {
  public:
    size_t StartPosition() const { return this->isEmpty() ? 0 : 1; }

    // The element at `position`, which moves on to the next one, or to 0 after the last. Needs a non-empty
    // list. Deliberate: a position beyond the count answers the first element and ends the walk.
    const T& GetNext(size_t& position) const {
        const size_t count = this->size();
        if (position == 0 || position > count) {
            position = 0;
            return this->itemAt(0);
        }
        const T& item = this->itemAt(position - 1);
        position = position < count ? position + 1 : 0;
        return item;
    }
};

// Repeated master elements of class T, owned by the list, in file order.
template <typename T>
class CNode : public CList<AutoPtr<T>> {
  public:
    ~CNode() override {}

    virtual void Append(const AutoPtr<T>& item) { this->push(item); }

    // Makes one T with its defaults, lets it parse the element at `node` and keeps it unless that failed.
    // Returns kOutOfMemory when the object cannot be made, else what T::Parse answered.
    Result Parse(CMatroskaNode* node) {
        AutoPtr<T> item(new (std::nothrow) T);
        if (item == nullptr) return kOutOfMemory;
        const Result result = item->Parse(node);
        if (Failed(result)) return result;
        Append(item);
        return result;
    }
};

}  // namespace MatroskaExtReader
