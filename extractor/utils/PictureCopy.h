// Copying decoded pictures.
#pragma once

#pragma GCC visibility push(default)

namespace android {

// Copies a planar YUV 4:2:0 picture of `width` x `height` pixels. `src` holds the three planes Y, U, V; luma
// rows lie `srcStride` bytes apart, chroma rows half of that. In `dst` luma rows are as wide as the width
// rounded up to 16, and the caller provides that much for every row, in source and destination alike. Where
// the chroma planes begin is said in the body. Nothing is copied for a width or height below 1.
void copyDataYUV420(unsigned char* dst, unsigned char** src, int srcStride, int width, int height);

}  // namespace android

#pragma GCC visibility pop
