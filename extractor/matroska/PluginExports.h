// The four functions by which the framework's extractor factory knows this library. It finds them by their
// symbols, so that namespace, names and parameter types are fixed. Each may be called from any thread.
#pragma once

#include <utils/Errors.h>
#include <utils/String8.h>
#include <utils/RefBase.h>
#include <utils/SortedVector.h>

#pragma GCC visibility push(default)

namespace android {

struct AMessage;
class DataSource;
class MediaExtractor;

// The MIME type that this library serves, WebM included. Always true.
bool getMimeString(String8* mime);
// Adds the file extensions, each with its dot. Always true.
bool getSupportExtension(SortedVector<String8>& extensions);
// Whether the source holds an EBML file. Sets the MIME type, and a confidence that is lower for WebM; `meta`
// is left alone. Keeps nothing.
bool Sniffer(const sp<DataSource>& source, String8* mimeType, float* confidence, sp<AMessage>* meta);
// A new extractor without a strong reference: the caller takes the first one. Never null; `meta` is ignored.
MediaExtractor* createInstance(const sp<DataSource>& source, const sp<AMessage>& meta);

}  // namespace android

#pragma GCC visibility pop
