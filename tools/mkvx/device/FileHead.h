// The head of a file as this program's own copy of the reader parsed it: header, tracks, losses, and where
// the elements stand that decided.
//
// The reader keeps values, not places, so a place is looked up when it is asked for: by reads through the
// file's one position, with the log silent. One thread.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "device/Evidence.h"
#include "device/FileTrack.h"
#include "device/Losses.h"

namespace MatroskaExtReader {
class CMatroskaFile;
}

namespace mkvx {

struct DocumentFacts {
    enum class Header { kReadable, kOtherDocType, kTooNew };

    Header header = Header::kReadable;
    std::string docType;              // texts end at their first zero byte
    uint64_t readVersion = 0;         // DocTypeReadVersion
    std::optional<uint64_t> segment;  // position of the Segment's header; nothing without a Segment
    uint64_t segmentData = 0;         // of its first child
    std::string title, muxingApp, writingApp;
};

// What track discovery makes of one entry.
struct Discovery {
    std::optional<DropReason> dropped;
    std::string mime;  // of one that is not dropped
};

class FileHead {
  public:
    // Parses the head of the file, and nothing else: no index is made, no track is looked into. What cannot
    // be parsed is left out.
    explicit FileHead(const android::sp<android::DataSource>& source);
    // Of a file that somebody else has opened, and that outlives this object.
    explicit FileHead(MatroskaExtReader::CMatroskaFile& file);
    ~FileHead();
    FileHead(const FileHead&) = delete;
    FileHead& operator=(const FileHead&) = delete;

    DocumentFacts document() const;
    // Microseconds. Where the file has no Cues and an index was made, the start of its last Cluster.
    int64_t durationUs() const;
    // TrackNumber of the track whose blocks drive seeking, the index and the subtitles.
    uint32_t masterTrack() const;

    // All TrackEntries in the order of the file.
    std::vector<FileTrack> tracks() const;
    size_t trackCount() const;
    // The entry that blocks with this number are read as; nothing when there is none.
    std::optional<FileTrack> findTrack(uint64_t number) const;
    // Runs track discovery on the entries at these places. It may read their first frames, and ends the
    // process over Vorbis headers that vorbisRefusal() finds fault with.
    std::vector<Discovery> discover(const std::vector<size_t>& places) const;

    // How often the reader has lost something of that kind, up to now; and the first losses, each with its
    // place.
    uint64_t lossCount(LossKind kind) const;
    std::vector<Loss> losses() const;

    // The element whose header stands at `position`; bytes that are none where no header can be read.
    Evidence evidenceAt(uint64_t position) const;
    // Bytes that are no element, or of which only the bytes matter.
    Evidence bytesAt(uint64_t offset, uint64_t size) const;
    // The element reached from the one at `position` by this path of IDs. Of several equal children the last
    // counts, as it does for the values that the reader keeps. Nothing when there is none.
    std::optional<Evidence> evidenceBelow(uint64_t position, std::initializer_list<uint32_t> path) const;
    // The same with the element at `position` itself where the path leads nowhere.
    Evidence evidenceBelowOr(uint64_t position, std::initializer_list<uint32_t> path) const;

  private:
    std::unique_ptr<MatroskaExtReader::CMatroskaFile> mOwned;
    MatroskaExtReader::CMatroskaFile& mFile;
};

}  // namespace mkvx
