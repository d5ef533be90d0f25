#include "device/Opening.h"

#include "base/Log.h"
#include "matroska/reader/MatroskaReader.h"

namespace mkvx {

using MatroskaExtReader::CMatroskaFile;

struct Opening::State {
    explicit State(const android::sp<android::DataSource>& source) : file(source), bounds(&file) {
        isReadable = !MatroskaExtReader::Failed(file.Init());
    }

    MuteLog mute;
    CMatroskaFile file;
    const CMatroskaFile::Opening bounds;
    bool isReadable = false;
};

Opening::Opening(const android::sp<android::DataSource>& source) : mState(new State(source)) {}

Opening::~Opening() = default;

bool Opening::isReadable() const {
    return mState->isReadable;
}

std::vector<SeekTarget> Opening::seekTargets() const {
    const auto& segment = mState->file.Segment;
    std::vector<SeekTarget> targets;
    for (const auto& seeks : segment.SeekHeads)
        for (const auto& entry : seeks->Entries)
            targets.push_back({uint32_t(entry->SeekID.Get()), segment.DataStart + entry->SeekPosition.Get()});
    return targets;
}

void Opening::scanForIndex() {
    if (isReadable() && mState->file.Segment.Cues.isEmpty()) mState->file.RebuildIndex();
}

}  // namespace mkvx
