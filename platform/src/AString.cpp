#define LOG_TAG "AString"

#include <media/stagefright/foundation/AString.h>

#include <ctype.h>
#include <stdio.h>
#include <string.h>
#include <strings.h>

#include <algorithm>

#include <utils/String8.h>

#include <media/stagefright/foundation/ADebug.h>

namespace android {

AString::AString(const char* text) : mBytes(text) {}

AString::AString(const char* bytes, size_t size) : mBytes(bytes, size) {}

AString::AString(const String8& from) : mBytes(from.string(), from.length()) {}

AString::AString(const AString& from, size_t offset, size_t count) {
    setTo(from, offset, count);
}

void AString::setTo(const char* text) {
    setTo(text, strlen(text));
}

void AString::setTo(const char* bytes, size_t size) {
    clear();
    append(bytes, size);
}

void AString::setTo(const AString& from, size_t offset, size_t count) {
    CHECK(&from != this);
    clear();
    append(from, offset, count);
}

void AString::clear() {
    std::string().swap(mBytes);
}

void AString::trim() {
    const auto isSpace = [](char c) { return isspace(static_cast<unsigned char>(c)) != 0; };
    const auto first = std::find_if_not(mBytes.begin(), mBytes.end(), isSpace);
    const auto last = std::find_if_not(mBytes.rbegin(), mBytes.rend(), isSpace).base();
    mBytes = first < last ? std::string(first, last) : std::string();
}

void AString::tolower() {
    for (char& c : mBytes) c = static_cast<char>(::tolower(static_cast<unsigned char>(c)));
}

void AString::erase(size_t start, size_t count) {
    CHECK_LE(start, size());
    CHECK_LE(count, size() - start);
    mBytes.erase(start, count);
}

void AString::append(const char* text) {
    mBytes.append(text);
}

void AString::append(const char* bytes, size_t size) {
    mBytes.append(bytes, size);
}

void AString::append(const AString& from, size_t offset, size_t count) {
    CHECK_LE(offset, from.size());
    CHECK_LE(count, from.size() - offset);
    mBytes.append(from.mBytes, offset, count);
}

void AString::append(int value) {
    mBytes += std::to_string(value);
}
void AString::append(unsigned value) {
    mBytes += std::to_string(value);
}
void AString::append(long value) {
    mBytes += std::to_string(value);
}
void AString::append(unsigned long value) {
    mBytes += std::to_string(value);
}
void AString::append(long long value) {
    mBytes += std::to_string(value);
}
void AString::append(unsigned long long value) {
    mBytes += std::to_string(value);
}

void AString::append(float value) {
    append(static_cast<double>(value));
}

void AString::append(double value) {
    char text[16];
    const int length = snprintf(text, sizeof(text), "%f", value);
    CHECK(length > 0 && static_cast<size_t>(length) < sizeof(text));
    append(text);
}

void AString::append(void* value) {
    char text[2 * sizeof(void*) + 8];
    snprintf(text, sizeof(text), "%p", value);
    append(text);
}

void AString::insert(const AString& from, size_t position) {
    insert(from.c_str(), from.size(), position);
}

void AString::insert(const char* bytes, size_t count, size_t position) {
    CHECK_LE(position, size());
    mBytes.insert(position, bytes, count);
}

ssize_t AString::find(const char* text, size_t start) const {
    CHECK_LE(start, size());
    const char* place = strstr(c_str() + start, text);
    return place != nullptr ? place - c_str() : -1;
}

size_t AString::hash() const {
    size_t x = 0;
    for (char c : mBytes) x = x * 31 + static_cast<size_t>(static_cast<signed char>(c));
    return x;
}

int AString::compare(const AString& other) const {
    return strcmp(c_str(), other.c_str());
}

bool AString::startsWith(const char* prefix) const {
    return strncmp(c_str(), prefix, strlen(prefix)) == 0;
}

bool AString::startsWithIgnoreCase(const char* prefix) const {
    return strncasecmp(c_str(), prefix, strlen(prefix)) == 0;
}

bool AString::endsWith(const char* suffix) const {
    const size_t length = strlen(suffix);
    return size() >= length && strcmp(c_str() + size() - length, suffix) == 0;
}

bool AString::endsWithIgnoreCase(const char* suffix) const {
    const size_t length = strlen(suffix);
    return size() >= length && strcasecmp(c_str() + size() - length, suffix) == 0;
}

AString StringPrintf(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    CHECK(length >= 0);
    std::string text(static_cast<size_t>(length), '\0');
    vsnprintf(&text[0], text.size() + 1, format, again);
    va_end(again);
    return AString(text.data(), text.size());
}

}  // namespace android
