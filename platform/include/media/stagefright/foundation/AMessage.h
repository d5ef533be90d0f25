// AMessage: a small bag of named, typed values, here only as the sniffer's third result.
//
// Names are compared exactly; setting an existing name replaces value and type. At most 64 values: one more
// aborts. Every find gives false, and leaves its output alone, when the name is missing or holds another
// type. The host has no message loops: `target` is kept but a message cannot be delivered. Not thread-safe.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <utils/KeyedVector.h>
#include <utils/RefBase.h>

#include <media/stagefright/foundation/ABase.h>
#include <media/stagefright/foundation/ALooper.h>

namespace android {

struct AString;

struct AMessage : public RefBase {
    // Portable sources use no argument: later platforms take other ones.
    AMessage(uint32_t what = 0, ALooper::handler_id target = 0);

    uint32_t what() const { return mWhat; }
    ALooper::handler_id target() const { return mTarget; }

    void clear();

    void setInt32(const char* name, int32_t value);
    void setInt64(const char* name, int64_t value);
    void setSize(const char* name, size_t value);
    void setFloat(const char* name, float value);
    void setDouble(const char* name, double value);
    void setPointer(const char* name, void* value);
    // Copies `length` bytes of `text`, or up to its NUL when negative.
    void setString(const char* name, const char* text, ssize_t length = -1);
    void setString(const char* name, const AString& text);

    bool findInt32(const char* name, int32_t* value) const;
    bool findInt64(const char* name, int64_t* value) const;
    bool findSize(const char* name, size_t* value) const;
    bool findFloat(const char* name, float* value) const;
    bool findDouble(const char* name, double* value) const;
    bool findPointer(const char* name, void** value) const;
    bool findString(const char* name, AString* value) const;

    bool contains(const char* name) const;
    size_t countEntries() const;

    // Logs that there is no loop to deliver to.
    void post(int64_t delayUs = 0);

  protected:
    ~AMessage() override;

  private:
    enum { kMaxItems = 64 };
    struct Item;

    Item* find(const char* name) const;
    Item* findTyped(const char* name, uint32_t type) const;
    Item* itemToSet(const char* name, uint32_t type);
    template <typename T>
    bool findValue(const char* name, uint32_t type, T Item::*field, T* value) const;

    uint32_t mWhat;
    ALooper::handler_id mTarget;
    Item* mItems;  // owned, kMaxItems of them once the first is set
    size_t mCount;

    DISALLOW_EVIL_CONSTRUCTORS(AMessage);
};

}  // namespace android
