// AString: the framework's growable byte string.
//
// Holds bytes, not text: embedded NULs count for size(), ==, append() with a length and hash(), but the
// functions that compare or search as C strings (compare, <, >, startsWith, endsWith, find) stop at the first
// NUL. Positions and lengths are bytes. A position outside the string aborts. Passing a null pointer is the
// caller's error. Not thread-safe; a const object may be read from several threads.
#pragma once

#include <stdarg.h>
#include <stddef.h>
#include <sys/types.h>

#include <string>

namespace android {

class String8;

struct AString {
    AString() = default;
    AString(const char* text);  // NOLINT(implicit): callers pass C strings where an AString is asked for
    AString(const char* bytes, size_t size);
    AString(const String8& from);  // NOLINT(implicit)
    AString(const AString& from) = default;
    AString(const AString& from, size_t offset, size_t count);
    AString& operator=(const AString& from) = default;

    void setTo(const char* text);
    // `bytes` must not lie inside this string.
    void setTo(const char* bytes, size_t size);
    // Aborts when `from` is this very string.
    void setTo(const AString& from, size_t offset, size_t count);

    size_t size() const { return mBytes.size(); }
    bool empty() const { return mBytes.empty(); }
    // Gives the memory back.
    void clear();
    // Never null, always NUL-terminated; valid until the next change.
    const char* c_str() const { return mBytes.c_str(); }

    // Takes white space (isspace) off both ends.
    void trim();
    void tolower();
    void erase(size_t start, size_t count);

    void append(char c) { append(&c, 1); }
    void append(const char* text);
    void append(const char* bytes, size_t size);
    void append(const AString& from) { append(from.c_str(), from.size()); }
    void append(const AString& from, size_t offset, size_t count);
    void append(int value);
    void append(unsigned value);
    void append(long value);
    void append(unsigned long value);
    void append(long long value);
    void append(unsigned long long value);
    // "%f" form; aborts when that has 16 characters or more.
    void append(float value);
    void append(double value);
    // "%p" form.
    void append(void* value);

    void insert(const AString& from, size_t position);
    void insert(const char* bytes, size_t size, size_t position);

    // First place at or behind `start`, or -1.
    ssize_t find(const char* text, size_t start = 0) const;

    size_t hash() const;

    bool operator==(const AString& other) const { return mBytes == other.mBytes; }
    bool operator!=(const AString& other) const { return mBytes != other.mBytes; }
    bool operator<(const AString& other) const { return compare(other) < 0; }
    bool operator>(const AString& other) const { return compare(other) > 0; }
    int compare(const AString& other) const;

    bool startsWith(const char* prefix) const;
    bool endsWith(const char* suffix) const;
    bool startsWithIgnoreCase(const char* prefix) const;
    bool endsWithIgnoreCase(const char* suffix) const;

  private:
    std::string mBytes;
};

// printf into a new string.
AString StringPrintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace android
