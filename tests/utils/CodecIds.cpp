// Stands in for the platform's codec library: an identifier from which a test can tell what it was asked, and
// 0 for the tag of AAC.
extern "C" __attribute__((visibility("default"))) int FfmpegGetCodecIDFromFourCC(unsigned int fourcc) {
    return fourcc == 0xFF ? 0 : static_cast<int>(fourcc & 0xFF) + 1000;
}
