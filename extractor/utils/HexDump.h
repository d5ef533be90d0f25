// Hex dumps of buffers to the log: priority debug, tag "Utils". `data` has to hold as many bytes as are
// claimed.
#pragma once

#pragma GCC visibility push(default)

namespace android {

// The length, up to five lines of 16 bytes from the start, and the last 16 bytes. Of a buffer shorter than
// one line it shows the first six bytes, below seven bytes nothing but the length.
void PrintContent(const char* prefix, const void* data, int len);

// Up to 64 bytes from the start, in lines of 16 bytes, then 8, 4 and 1 for what is left over.
void hexdump(char* prefix, const unsigned char* data, unsigned int size);

}  // namespace android

#pragma GCC visibility pop
