// Aids for the one who debugs on a device; nothing in the extractor calls them.
#pragma once

#pragma GCC visibility push(default)

namespace android {

// Appends `size` bytes to the file at `path`, which is created when it does not exist. Says nothing about
// failure.
void dumpFrame(const char* path, const void* data, int size);

// Logs the calling thread's stack, one line per frame: priority debug, tag "showBacktrace".
void showBacktrace();

}  // namespace android

#pragma GCC visibility pop
