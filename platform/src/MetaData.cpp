#define LOG_TAG "MetaData"

#include <media/stagefright/MetaData.h>

#include <inttypes.h>
#include <stdlib.h>
#include <string.h>

#include <utils/Log.h>

#include <media/stagefright/foundation/ADebug.h>

namespace android {

namespace {

// A cleared object keeps an item array of up to this size for its next life.
constexpr uint32_t kKeptCapacity = 16;

String8 FourCC(uint32_t key) {
    char text[5] = {};
    for (int i = 0; i < 4; ++i) {
        const char c = static_cast<char>(key >> (24 - 8 * i));
        text[i] = (c >= 0x20 && c < 0x7f) ? c : '.';
    }
    return String8(text);
}

// memcpy, with the usual sizes known to the compiler.
inline void copyBytes(void* to, const void* from, size_t size) {
    if (size == sizeof(uint64_t)) {
        memcpy(to, from, sizeof(uint64_t));
    } else if (size == sizeof(uint32_t)) {
        memcpy(to, from, sizeof(uint32_t));
    } else if (size > 0) {
        memcpy(to, from, size);
    }
}

template <typename T>
T valueAt(const void* data, size_t index = 0) {
    T value;
    memcpy(&value, static_cast<const uint8_t*>(data) + index * sizeof(T), sizeof(T));
    return value;
}

}  // namespace

inline void MetaData::Item::store(uint32_t newType, const void* data, size_t newSize) {
    void* to = bytes;
    if (newSize > kInlineBytes) {
        to = malloc(newSize);
        CHECK(to != NULL);
    }
    copyBytes(to, data, newSize);
    if (newSize > kInlineBytes) block = to;
    type = newType;
    size = newSize;
}

inline void MetaData::Item::release() {
    if (size > kInlineBytes) free(block);
    size = 0;
}

inline size_t MetaData::lowerBound(uint32_t key) const {
    // Mostly there are two or three items, and a new key goes behind them.
    size_t low = 0;
    size_t high = mCount;
    while (high - low > kInlineItems) {
        const size_t middle = (low + high) / 2;
        if (mItems[middle].key < key) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    while (low < high && mItems[low].key < key) ++low;
    return low;
}

inline MetaData::Item* MetaData::insertAt(size_t index) {
    if (mCount == mCapacity) {
        const uint32_t capacity = mCapacity * 2;
        Item* grown = static_cast<Item*>(malloc(capacity * sizeof(Item)));
        CHECK(grown != NULL);
        memcpy(grown, mItems, mCount * sizeof(Item));
        if (mItems != mInline) free(mItems);
        mItems = grown;
        mCapacity = capacity;
    }
    for (size_t i = mCount; i > index; --i) mItems[i] = mItems[i - 1];
    ++mCount;
    return &mItems[index];
}

MetaData::MetaData() : mItems(mInline), mCount(0), mCapacity(kInlineItems) {}

MetaData::MetaData(const MetaData& from) : RefBase(), mItems(mInline), mCount(0), mCapacity(kInlineItems) {
    for (uint32_t i = 0; i < from.mCount; ++i) {
        const Item& item = from.mItems[i];
        Item* copy = insertAt(i);
        copy->key = item.key;
        copy->store(item.type, item.data(), item.size);
    }
}

MetaData::~MetaData() {
    clear();
    if (mItems != mInline) free(mItems);
}

void MetaData::clear() {
    for (uint32_t i = 0; i < mCount; ++i) mItems[i].release();
    mCount = 0;
    if (mCapacity > kKeptCapacity) {
        free(mItems);
        mItems = mInline;
        mCapacity = kInlineItems;
    }
}

inline const MetaData::Item* MetaData::find(uint32_t key) const {
    const size_t index = lowerBound(key);
    return (index < mCount && mItems[index].key == key) ? &mItems[index] : nullptr;
}

__attribute__((always_inline)) inline const MetaData::Item* MetaData::findTyped(uint32_t key, uint32_t type,
                                                                                size_t size) const {
    const Item* item = find(key);
    if (item == nullptr || item->type != type) return nullptr;
    CHECK_EQ(item->size, size);
    return item;
}

bool MetaData::remove(uint32_t key) {
    const size_t index = lowerBound(key);
    if (index == mCount || mItems[index].key != key) return false;
    mItems[index].release();
    --mCount;
    memmove(mItems + index, mItems + index + 1, (mCount - index) * sizeof(Item));
    return true;
}

// Inlined where the size is known, since every access unit gets a time and a sync flag.
__attribute__((always_inline)) inline bool MetaData::setBytes(uint32_t key, uint32_t type, const void* data,
                                                              size_t size) {
    const size_t index = lowerBound(key);
    const bool overwritten = index < mCount && mItems[index].key == key;
    Item* item = overwritten ? &mItems[index] : insertAt(index);
    if (overwritten) item->release();
    item->key = key;
    item->store(type, data, size);
    return overwritten;
}

bool MetaData::setData(uint32_t key, uint32_t type, const void* data, size_t size) {
    return setBytes(key, type, data, size);
}

bool MetaData::setCString(uint32_t key, const char* value) {
    return setData(key, TYPE_C_STRING, value, strlen(value) + 1);
}

bool MetaData::setInt32(uint32_t key, int32_t value) {
    return setBytes(key, TYPE_INT32, &value, sizeof(value));
}

bool MetaData::setInt64(uint32_t key, int64_t value) {
    return setBytes(key, TYPE_INT64, &value, sizeof(value));
}

bool MetaData::setFloat(uint32_t key, float value) {
    return setData(key, TYPE_FLOAT, &value, sizeof(value));
}

bool MetaData::setPointer(uint32_t key, void* value) {
    return setData(key, TYPE_POINTER, &value, sizeof(value));
}

bool MetaData::setRect(uint32_t key, int32_t left, int32_t top, int32_t right, int32_t bottom) {
    const int32_t sides[4] = {left, top, right, bottom};
    return setData(key, TYPE_RECT, sides, sizeof(sides));
}

bool MetaData::findCString(uint32_t key, const char** value) {
    const Item* item = find(key);
    if (item == nullptr || item->type != TYPE_C_STRING) return false;
    *value = static_cast<const char*>(item->data());
    return true;
}

bool MetaData::findInt32(uint32_t key, int32_t* value) {
    const Item* item = findTyped(key, TYPE_INT32, sizeof(*value));
    if (item != nullptr) *value = valueAt<int32_t>(item->data());
    return item != nullptr;
}

bool MetaData::findInt64(uint32_t key, int64_t* value) {
    const Item* item = findTyped(key, TYPE_INT64, sizeof(*value));
    if (item != nullptr) *value = valueAt<int64_t>(item->data());
    return item != nullptr;
}

bool MetaData::findFloat(uint32_t key, float* value) {
    const Item* item = findTyped(key, TYPE_FLOAT, sizeof(*value));
    if (item != nullptr) *value = valueAt<float>(item->data());
    return item != nullptr;
}

bool MetaData::findPointer(uint32_t key, void** value) {
    const Item* item = findTyped(key, TYPE_POINTER, sizeof(*value));
    if (item != nullptr) *value = valueAt<void*>(item->data());
    return item != nullptr;
}

bool MetaData::findRect(uint32_t key, int32_t* left, int32_t* top, int32_t* right, int32_t* bottom) {
    const Item* item = findTyped(key, TYPE_RECT, 4 * sizeof(int32_t));
    if (item == nullptr) return false;
    *left = valueAt<int32_t>(item->data(), 0);
    *top = valueAt<int32_t>(item->data(), 1);
    *right = valueAt<int32_t>(item->data(), 2);
    *bottom = valueAt<int32_t>(item->data(), 3);
    return true;
}

bool MetaData::findData(uint32_t key, uint32_t* type, const void** data, size_t* size) const {
    const Item* item = find(key);
    if (item == nullptr) return false;
    *type = item->type;
    *data = item->data();
    *size = item->size;
    return true;
}

bool MetaData::hasData(uint32_t key) const {
    return find(key) != nullptr;
}

// setData may have stored any type name with any size: what does not fit its type is shown as bytes.
String8 MetaData::describe(const Item& item) {
    const void* data = item.data();
    const bool fits32 = item.size == sizeof(int32_t);
    if (item.type == TYPE_INT32 && fits32)
        return String8::format("(int32_t) %" PRId32, valueAt<int32_t>(data));
    if (item.type == TYPE_FLOAT && fits32) return String8::format("(float) %f", valueAt<float>(data));
    if (item.type == TYPE_INT64 && item.size == sizeof(int64_t)) {
        return String8::format("(int64_t) %" PRId64, valueAt<int64_t>(data));
    }
    if (item.type == TYPE_POINTER && item.size == sizeof(void*)) {
        return String8::format("(void *) %p", valueAt<void*>(data));
    }
    if (item.type == TYPE_RECT && item.size == 4 * sizeof(int32_t)) {
        return String8::format("Rect(%" PRId32 ", %" PRId32 ", %" PRId32 ", %" PRId32 ")",
                               valueAt<int32_t>(data), valueAt<int32_t>(data, 1), valueAt<int32_t>(data, 2),
                               valueAt<int32_t>(data, 3));
    }
    if (item.type == TYPE_C_STRING) {
        const int length = static_cast<int>(strnlen(static_cast<const char*>(data), item.size));
        return String8::format("(char *) %.*s", length, static_cast<const char*>(data));
    }
    return String8::format("(type %s) %zu bytes", FourCC(item.type).string(), item.size);
}

void MetaData::dumpToLog() const {
    for (uint32_t i = mCount; i > 0; --i) {
        const Item& item = mItems[i - 1];
        ALOGI("%s: %s", FourCC(item.key).string(), describe(item).string());
    }
}

}  // namespace android
