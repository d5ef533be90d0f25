// Whole files through the plug-in's own factory function, as a framework opens them.
#pragma once

#include <utils/Errors.h>
#include <utils/SortedVector.h>
#include <utils/String8.h>
#include <media/stagefright/DataSource.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/MediaSource.h>
#include <media/stagefright/MetaData.h>
#include <media/stagefright/foundation/AMessage.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/EbmlWriter.h"
#include "support/FaultySource.h"
#include "support/Listing.h"
#include "support/LogCapture.h"

namespace android {
bool getMimeString(String8* mime);
bool getSupportExtension(SortedVector<String8>& extensions);
bool Sniffer(const sp<DataSource>& source, String8* mime, float* confidence, sp<AMessage>* meta);
MediaExtractor* createInstance(const sp<DataSource>& source, const sp<AMessage>& meta);
}  // namespace android

namespace testing_support {

using android::MediaExtractor;
using android::MediaSource;
using android::MetaData;
using android::sp;
using android::status_t;

constexpr char kTag[] = "MatroskaExtExtractor";

inline sp<MediaExtractor> Open(const sp<android::DataSource>& source) {
    return android::createInstance(source, nullptr);
}
inline sp<MediaExtractor> Open(const Bytes& bytes, Faults faults = {}) {
    return Open(sp<android::DataSource>(new FaultySource(bytes, faults)));
}
inline sp<MediaExtractor> Open(const Document& document, Faults faults = {}) {
    return Open(document.bytes, faults);
}

// Info (10 s unless said), Tracks, a Cues element that names the first Cluster, the Clusters.
inline Document Movie(const Elements& tracks, Elements clusters, double durationMs = 10000) {
    Elements children = {Info(durationMs), Master(id::kTracks, tracks)};
    if (!clusters.empty()) {
        clusters[0] = clusters[0].Label("first cluster");
        children.push_back(Master(id::kCues, {CuePoint(0, 1, "first cluster")}));
    }
    children.insert(children.end(), clusters.begin(), clusters.end());
    return Write({EbmlHeader(), Segment(children)});
}

inline Element AvcTrack(uint64_t number = 1) {
    return Track(number, kVideoType, "V_MPEG4/ISO/AVC",
                 {Video(64, 48), Bin(id::kCodecPrivate, Hex("0142001EFFE10007"))});
}
// A started source of track `index`.
inline sp<MediaSource> Started(const sp<MediaExtractor>& extractor, size_t index) {
    sp<MediaSource> source = extractor->getTrack(index);
    source->start(nullptr);
    return source;
}

// "time/sync:hex " for each unit; the status that ended the reading comes last.
inline std::string Units(const sp<MediaSource>& source) {
    status_t end = android::OK;
    std::string text;
    for (const Unit& unit : ReadAll(source, &end)) {
        text += std::to_string(unit.timeUs) + "/" + std::to_string(unit.sync) + ":" + ToHex(unit.bytes) + " ";
    }
    return text + std::to_string(end);
}

// One read: the unit as above, or the status.
inline std::string ReadOne(const sp<MediaSource>& source, const MediaSource::ReadOptions* options = nullptr) {
    Unit unit;
    const status_t status = ReadUnit(source, &unit, options);
    if (status != android::OK) return std::to_string(status);
    return std::to_string(unit.timeUs) + "/" + std::to_string(unit.sync) + ":" + ToHex(unit.bytes);
}

}  // namespace testing_support
