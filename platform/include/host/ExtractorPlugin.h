// ExtractorPlugin: the host's side of the plug-in ABI, what the framework's extractor factory is on a device.
//
// A plug-in is a shared library with four functions of C++ linkage in namespace android. Loading resolves
// them by their mangled names and never unloads: objects that a plug-in made run its code until the last
// reference is gone, and nobody here can know when that is.
#pragma once

#include <string>

#include <utils/RefBase.h>
#include <utils/SortedVector.h>
#include <utils/String8.h>

#include <media/stagefright/DataSource.h>
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/foundation/AMessage.h>

namespace android {
namespace host {

// A loaded plug-in. Freely copied; thread-safe once loaded.
struct ExtractorPlugin {
    std::string path;

    bool (*getMimeString)(String8* mime) = nullptr;
    bool (*getSupportExtension)(SortedVector<String8>& extensions) = nullptr;
    DataSource::SnifferFunc Sniffer = nullptr;
    // The result has no reference yet; open() puts it into its sp<>.
    MediaExtractor* (*createInstance)(const sp<DataSource>& source, const sp<AMessage>& meta) = nullptr;

    // False with a sentence in *error when the library cannot be loaded or lacks a function; *plugin is then
    // untouched. A path without a slash means the working directory, not the loader's search path.
    [[gnu::warn_unused_result]] static bool Load(const std::string& path, ExtractorPlugin* plugin,
                                                 std::string* error);

    // A new extractor on `source`, without the DRM flag. Null when the plug-in makes none.
    sp<MediaExtractor> open(const sp<DataSource>& source, const sp<AMessage>& meta) const;
};

// Loads a plug-in and makes it known to DataSource::sniff and MediaExtractor::Create. A second time is no
// error and changes nothing. Thread-safe.
[[gnu::warn_unused_result]] bool RegisterPlugin(const std::string& path, std::string* error);

// Makes a sniffer known to DataSource::sniff alone. A second time changes nothing. Thread-safe.
void RegisterSniffer(DataSource::SnifferFunc sniffer);

}  // namespace host
}  // namespace android
