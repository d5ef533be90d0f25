#define LOG_TAG "AMessage"

#include <media/stagefright/foundation/AMessage.h>

#include <string.h>

#include <string>
#include <utility>

#include <media/stagefright/foundation/ADebug.h>
#include <media/stagefright/foundation/AString.h>

namespace android {

namespace {

enum : uint32_t { kInt32, kInt64, kSize, kFloat, kDouble, kPointer, kString };

}  // namespace

struct AMessage::Item {
    std::string name;
    uint32_t type = kInt32;
    union {
        int64_t int64Value = 0;
        int32_t int32Value;
        size_t sizeValue;
        float floatValue;
        double doubleValue;
        void* pointerValue;
    };
    AString text;
};

AMessage::AMessage(uint32_t what, ALooper::handler_id target)
    : mWhat(what), mTarget(target), mItems(nullptr), mCount(0) {}

AMessage::~AMessage() {
    clear();
}

void AMessage::clear() {
    delete[] mItems;
    mItems = nullptr;
    mCount = 0;
}

AMessage::Item* AMessage::find(const char* name) const {
    for (size_t i = 0; i < mCount; ++i) {
        if (mItems[i].name == name) return &mItems[i];
    }
    return nullptr;
}

AMessage::Item* AMessage::findTyped(const char* name, uint32_t type) const {
    Item* item = find(name);
    return (item != nullptr && item->type == type) ? item : nullptr;
}

AMessage::Item* AMessage::itemToSet(const char* name, uint32_t type) {
    Item* item = find(name);
    if (item == nullptr) {
        CHECK(mCount < kMaxItems);
        if (mItems == nullptr) mItems = new Item[kMaxItems];
        item = &mItems[mCount++];
        item->name = name;
    }
    item->type = type;
    item->text.clear();
    return item;
}

template <typename T>
bool AMessage::findValue(const char* name, uint32_t type, T Item::*field, T* value) const {
    const Item* item = findTyped(name, type);
    if (item != nullptr) *value = item->*field;
    return item != nullptr;
}

void AMessage::setInt32(const char* name, int32_t value) {
    itemToSet(name, kInt32)->int32Value = value;
}
void AMessage::setInt64(const char* name, int64_t value) {
    itemToSet(name, kInt64)->int64Value = value;
}
void AMessage::setSize(const char* name, size_t value) {
    itemToSet(name, kSize)->sizeValue = value;
}
void AMessage::setFloat(const char* name, float value) {
    itemToSet(name, kFloat)->floatValue = value;
}
void AMessage::setDouble(const char* name, double value) {
    itemToSet(name, kDouble)->doubleValue = value;
}
void AMessage::setPointer(const char* name, void* value) {
    itemToSet(name, kPointer)->pointerValue = value;
}

void AMessage::setString(const char* name, const char* text, ssize_t length) {
    // Copied first: `text` may belong to the item that is about to change.
    AString copy(text, length < 0 ? strlen(text) : static_cast<size_t>(length));
    itemToSet(name, kString)->text = std::move(copy);
}

void AMessage::setString(const char* name, const AString& text) {
    setString(name, text.c_str(), static_cast<ssize_t>(text.size()));
}

bool AMessage::findInt32(const char* name, int32_t* value) const {
    return findValue(name, kInt32, &Item::int32Value, value);
}

bool AMessage::findInt64(const char* name, int64_t* value) const {
    return findValue(name, kInt64, &Item::int64Value, value);
}

bool AMessage::findSize(const char* name, size_t* value) const {
    return findValue(name, kSize, &Item::sizeValue, value);
}

bool AMessage::findFloat(const char* name, float* value) const {
    return findValue(name, kFloat, &Item::floatValue, value);
}

bool AMessage::findDouble(const char* name, double* value) const {
    return findValue(name, kDouble, &Item::doubleValue, value);
}

bool AMessage::findPointer(const char* name, void** value) const {
    return findValue(name, kPointer, &Item::pointerValue, value);
}

bool AMessage::findString(const char* name, AString* value) const {
    return findValue(name, kString, &Item::text, value);
}

bool AMessage::contains(const char* name) const {
    return find(name) != nullptr;
}

size_t AMessage::countEntries() const {
    return mCount;
}

void AMessage::post(int64_t /*delayUs*/) {
    ALOGW("message 0x%08x not posted: no message loop here", mWhat);
}

}  // namespace android
