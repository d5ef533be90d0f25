// A track's content encodings: no step makes more than allowed, a frame leaves no trace in the next, and what
// was encoded comes back.
//
// Front, 32 bytes: the number of encodings (modulo 5); a limit for what a step may make, as a power of two
// (modulo 27); the scope that is asked for; how hard to deflate (modulo 10; not at all with the top bit set);
// then for each of four encodings order, scope, type, algorithm, and how many bytes of settings it takes from
// what follows; the rest is frame data.
#include <algorithm>
#include <vector>

#include "FuzzTarget.h"
#include "matroska/reader/MatroskaReader.h"
#include "support/FaultySource.h"

namespace fuzz {

namespace {

namespace reader = MatroskaExtReader;
namespace write = testing_support;
using android::sp;

constexpr size_t kFrontSize = 32;
constexpr size_t kMostEncodings = 4;

struct Step {
    uint64_t order, scope, type, algorithm;
    Bytes settings;
};

// A file that does nothing but describe one track with these encodings.
Bytes FileWith(const std::vector<Step>& steps) {
    write::Elements encodings;
    for (const Step& step : steps) {
        write::Elements compression = {write::Uint(write::id::kContentCompAlgo, step.algorithm)};
        if (!step.settings.empty())
            compression.push_back(write::Bin(write::id::kContentCompSettings, step.settings));
        encodings.push_back(write::Master(write::id::kContentEncoding,
                                          {write::Uint(write::id::kContentEncodingOrder, step.order),
                                           write::Uint(write::id::kContentEncodingScope, step.scope),
                                           write::Uint(write::id::kContentEncodingType, step.type),
                                           write::Master(write::id::kContentCompression, compression)}));
    }
    const write::Element track =
        write::Track(1, 1, "V_MPEG2", {write::Master(write::id::kContentEncodings, encodings)});
    return write::Write({write::EbmlHeader(),
                         write::Segment({write::Info(1), write::Master(write::id::kTracks, {track})})})
        .bytes;
}

class Track {
  public:
    explicit Track(const std::vector<Step>& steps) : mFile(new write::FaultySource(FileWith(steps))) {
        Require(!reader::Failed(mFile.Init()), "the description can be read");
        mEntry = mFile.FindTrack(1);
        Require(mEntry != nullptr && mEntry->Encodings.size() == steps.size(), "all encodings are known");
    }

    bool Expand(uint64_t scope, uint32_t limit, Bytes* frame) {
        reader::ByteBuffer data;
        Require(data.Resize(static_cast<uint32_t>(frame->size())), "there is memory for a frame");
        std::copy(frame->begin(), frame->end(), data.data());
        const int result = mEntry->Expand(data, scope, mFile.SharedInflater(), limit);
        frame->assign(data.data(), data.data() + data.size());
        return result == 1;
    }

  private:
    reader::CMatroskaFile mFile;
    reader::TrackEntry* mEntry = nullptr;
};

void CheckExpansion(const std::vector<Step>& steps, uint64_t scope, uint32_t limit, const Bytes& frame) {
    Track track(steps);
    Bytes first = frame, again = frame;
    const bool isUndone = track.Expand(scope, limit, &first);
    Require(isUndone == track.Expand(scope, limit, &again) && first == again,
            "a frame leaves no trace in the next");
    Require(first.size() <= std::max<size_t>(limit, frame.size()), "no step makes more than the limit");
    const bool isTouched = std::any_of(steps.begin(), steps.end(), [=](const Step& step) {
        return (step.scope & scope) != 0 && step.type <= 1;
    });
    Require(isTouched || (isUndone && first == frame), "what no encoding of the scope holds stays as it is");
}

// What was stripped and then deflated comes back.
void CheckRoundTrip(const Bytes& frame, const Bytes& header, int level) {
    const std::vector<Step> steps = {{0, 1, 0, 3, header}, {1, 1, 0, 0, {}}};
    Bytes packed = write::Zlib(frame, level);
    Bytes expected = header;
    expected.insert(expected.end(), frame.begin(), frame.end());
    Track track(steps);
    (void)track.Expand(1, 64u << 20, &packed);
    Require(packed == expected, "what was encoded comes back");
}

}  // namespace

void RunEncodings(const uint8_t* data, size_t size) {
    if (size < kFrontSize) return;
    const size_t count = data[0] % (kMostEncodings + 1);
    const uint32_t limit = 1u << data[1] % 27;
    const uint64_t scope = data[2];
    size_t at = kFrontSize;
    std::vector<Step> steps;
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* raw = data + 4 + 5 * i;
        const size_t settings = std::min<size_t>(raw[4], size - at);
        steps.push_back({raw[0], raw[1], raw[2] % 4u, raw[3] % 6u, Bytes(data + at, data + at + settings)});
        at += settings;
    }
    const Bytes frame(data + at, data + size);
    CheckExpansion(steps, scope, limit, frame);
    if ((data[3] & 0x80) != 0) return;  // most of the time goes into deflating
    CheckRoundTrip(frame, steps.empty() ? Bytes{0, 0, 1} : steps[0].settings, data[3] % 10);
}

}  // namespace fuzz
