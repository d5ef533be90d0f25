// Stands in for the platform's codec library: an identifier from which a test can tell what it was asked.
extern "C" __attribute__((visibility("default"))) int FfmpegGetCodecIDFromFourCC(unsigned int fourcc) {
    return static_cast<int>(fourcc & 0xFF) + 1000;
}
