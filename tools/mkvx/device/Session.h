// One file in the hands of the plug-in, driven as the framework's extractor factory drives it: sniff, create,
// ask.
//
// A Session throws FileFailure for a file that cannot be used: unreadable, not claimed by the sniffer, able
// to stop the process that opens it, or without a single track entry; and Interrupted, since what opening
// then finds is not what the file holds. One thread. The buffers and sources that it hands out keep what they
// need alive; the plug-in's library stays loaded.
//
// The file is opened once, and every extractor gets a view of its own of the bytes. Where faults are asked
// for, each view begins them where the sniffer's reads have left them, as on a device, where one source
// serves both: all extractors of one Session meet the same faults.
#pragma once
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/MediaSource.h>
#include <memory>
#include <optional>
#include <string>

#include "base/Failure.h"
#include "device/Model.h"
#include "device/OwnReader.h"
#include "device/Plugin.h"
#include "source/Faults.h"

namespace mkvx {

// Which of its reasons a Session has for not taking a file.
class UnusableFile : public FileFailure {
  public:
    enum class Why { kNotClaimed, kStopsProcess, kNoExtractor, kNoTracks };
    UnusableFile(Why why, const std::string& file, const std::string& reason,
                 const std::string& stoppedBy = std::string());

    Why why() const { return mWhy; }
    // The assertion's text or the signal, for kStopsProcess.
    const std::string& stoppedBy() const { return mStoppedBy; }

  private:
    Why mWhy;
    std::string mStoppedBy;
};

class Session {
  public:
    Session(const ExtractorPlugin& plugin, const std::string& path, const SourceOptions& options = {});
    // Of a file that is open already: `bytes` are those of `path`, without faults.
    Session(const ExtractorPlugin& plugin, const std::string& path, const FaultOptions& faults,
            const android::sp<android::DataSource>& bytes);

    const FileInfo& info() const { return mInfo; }
    const OwnReader& reader() const { return *mReader; }
    // The offered track that drives the others: seeks follow its cue points, and subtitle events arrive while
    // it is read. Null when the file's master track has no source, or one that reads no blocks.
    const TrackInfo* masterTrack() const;

    // A new source of that track, not started, from this session's extractor.
    android::sp<android::MediaSource> newSource(size_t index) const;
    // An extractor that nobody has read from yet.
    android::sp<android::MediaExtractor> newExtractor() const;
    // A view of the bytes for one more extractor; and one that nobody has sniffed at.
    android::sp<android::DataSource> newBytes() const;
    android::sp<android::DataSource> unsniffedBytes() const;
    const ExtractorPlugin& plugin() const { return mPlugin; }

  private:
    // The steps of opening; each throws what makes the file unusable.
    void beClaimed(const std::string& path);
    void openExtractor(const std::string& path);
    void openReader(const std::string& path);

    ExtractorPlugin mPlugin;
    FaultOptions mFaults;
    android::sp<android::DataSource> mBytes;  // without faults
    FaultySource::Reads mSniffed;
    android::sp<android::MediaExtractor> mExtractor;
    std::unique_ptr<OwnReader> mReader;
    FileInfo mInfo;
};

// Asks only the sniffer. Throws FileFailure when the file cannot be read, and Interrupted.
SniffResult sniffFile(const ExtractorPlugin& plugin, const std::string& path,
                      const SourceOptions& options = {});

}  // namespace mkvx
