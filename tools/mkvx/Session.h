// One file in the hands of the plug-in, driven as the framework's extractor factory drives it: sniff, create,
// ask.
//
// A Session throws FileFailure for a file that cannot be used: unreadable, not claimed by the sniffer, able
// to stop the process that opens it, or without a single track entry. One thread. The buffers and sources
// that it hands out keep what they need alive; the plug-in's library stays loaded.
#pragma once
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/MediaSource.h>
#include <memory>
#include <string>

#include "Model.h"
#include "ModelFromReader.h"
#include "Plugin.h"

namespace mkvx {

class Session {
  public:
    Session(const ExtractorPlugin& plugin, const std::string& path);

    const FileInfo& info() const { return mInfo; }
    const OwnReader& reader() const { return *mReader; }

    // A new source of that track, not started, from this session's extractor.
    android::sp<android::MediaSource> newSource(size_t index) const;
    // An extractor that nobody has read from yet.
    android::sp<android::MediaExtractor> newExtractor() const;

  private:
    ExtractorPlugin mPlugin;
    android::sp<android::DataSource> mSource;
    android::sp<android::MediaExtractor> mExtractor;
    std::unique_ptr<OwnReader> mReader;
    FileInfo mInfo;
};

// Asks only the sniffer. Throws FileFailure when the file cannot be read.
SniffResult sniffFile(const ExtractorPlugin& plugin, const std::string& path);

}  // namespace mkvx
