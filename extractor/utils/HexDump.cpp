#include "utils/HexDump.h"

#include <stdint.h>
#include <stdio.h>

#include <android/log.h>

namespace android {
namespace {

// The hex digits of up to 16 bytes as one text; `format` prints one byte in three characters.
class HexText {
  public:
    HexText(const char* format, const uint8_t* data, unsigned int count) {
        mText[0] = '\0';
        for (unsigned int i = 0; i < count; ++i) snprintf(mText + 3 * i, 4, format, data[i]);
    }
    const char* get() const { return mText; }

  private:
    char mText[3 * 16 + 1];
};

void LogSixteen(const char* prefix, const uint8_t* data, int offset) {
    const HexText hex(" %02x", data + offset, 16);
    __android_log_print(ANDROID_LOG_DEBUG, "Utils", "%s: %04X:%s", prefix, static_cast<unsigned int>(offset),
                        hex.get());
}

}  // namespace

void PrintContent(const char* prefix, const void* data, int len) {
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    __android_log_print(ANDROID_LOG_DEBUG, "Utils", "%s iLen = %d", prefix, len);
    const int lines = len / 16 < 5 ? len / 16 : 5;
    for (int line = 0; line < lines; ++line) LogSixteen(prefix, bytes, 16 * line);
    if (lines <= 0) {
        if (len < 7) {
            __android_log_print(ANDROID_LOG_DEBUG, "Utils", "%s mInputBuffer Len = %d", prefix, len);
            return;
        }
        const HexText hex(" %02x", bytes, 6);
        __android_log_print(ANDROID_LOG_DEBUG, "Utils", "%s: %04X:%s", prefix, 0u, hex.get());
    }
    if (len >= 17) {
        __android_log_print(ANDROID_LOG_DEBUG, "Utils", "%s The last Line:", prefix);
        LogSixteen(prefix, bytes, len - 16);
    }
}

void hexdump(char* prefix, const unsigned char* data, unsigned int size) {
    constexpr unsigned int kShown = 64;
    static const unsigned int kWidths[] = {16, 8, 4, 1};
    unsigned int offset = 0;
    for (unsigned int width : kWidths) {
        for (; offset < kShown && size - offset >= width; offset += width) {
            const HexText hex(" %.2x", data + offset, width);
            __android_log_print(ANDROID_LOG_DEBUG, "Utils", "%s: (%.4d/%.4d)%s%s", prefix,
                                static_cast<int>(offset), static_cast<int>(size), hex.get(),
                                width == 1 ? " " : "");
        }
    }
}

}  // namespace android
