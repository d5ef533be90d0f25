// A track's content encodings, undone as a second implementation undoes them, and what was encoded comes
// back.
//
// Front, 32 bytes: the number of encodings (modulo 5); a limit for what a step may make, as a power of two
// (modulo 27); the scope that is asked for; how hard to deflate (modulo 10; not at all with the top bit set);
// then for each of four encodings order, scope, type, algorithm, and how many bytes of settings it takes from
// what follows; the rest is frame data.
#include <zlib.h>

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
constexpr uint32_t kStep = 1000;

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

// Inflation as it is defined: in steps of 1000 bytes of output, after each of which the frame may count as
// complete. A stream without its end is refused where a whole step might pass the limit.
bool InflateInSteps(const Bytes& in, uint32_t limit, Bytes* out) {
    z_stream stream = {};
    if (inflateInit(&stream) != Z_OK) return false;
    stream.next_in = const_cast<Bytef*>(in.data());
    stream.avail_in = static_cast<uInt>(in.size());
    out->clear();
    bool isComplete = false, isSound = true;
    while (isSound && !isComplete && out->size() <= limit) {
        const size_t before = out->size();
        out->resize(before + kStep);
        stream.next_out = out->data() + before;
        stream.avail_out = kStep;
        const int status = inflate(&stream, Z_NO_FLUSH);
        out->resize(before + kStep - stream.avail_out);
        const bool isEnd = status == Z_STREAM_END;
        isComplete = isEnd || stream.avail_out != 0 || stream.avail_in == 0;
        isSound = isEnd || (status == Z_OK && (!isComplete || before + kStep <= limit));
    }
    inflateEnd(&stream);
    return isSound && isComplete && out->size() <= limit;
}

// True when all encodings that match were undone.
bool Undo(std::vector<Step> steps, uint64_t scope, uint32_t limit, Bytes* frame) {
    std::stable_sort(steps.begin(), steps.end(),
                     [](const Step& a, const Step& b) { return a.order < b.order; });
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        if ((step->scope & scope) == 0) continue;
        if (step->type == 1) return false;
        if (step->type != 0) continue;
        if (step->algorithm == 3) {
            if (!step->settings.empty() && step->settings.size() + frame->size() <= limit) {
                frame->insert(frame->begin(), step->settings.begin(), step->settings.end());
            }
            return false;
        }
        Bytes plain;
        if (step->algorithm != 0 || !InflateInSteps(*frame, limit, &plain)) return false;
        *frame = plain;
    }
    return true;
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

void CheckAgainstSecond(const std::vector<Step>& steps, uint64_t scope, uint32_t limit, const Bytes& frame) {
    Track track(steps);
    Bytes first = frame, again = frame, second = frame;
    const bool isUndone = track.Expand(scope, limit, &first);
    Require(isUndone == track.Expand(scope, limit, &again) && first == again,
            "a frame leaves no trace in the next");
    Require(first.size() <= std::max<size_t>(limit, frame.size()), "no step makes more than the limit");
    Require(isUndone == Undo(steps, scope, limit, &second),
            "both implementations agree on whether all was undone");
    Require(first == second, "both implementations make the same bytes");
}

// What was stripped and then deflated comes back.
void CheckRoundTrip(const Bytes& frame, const Bytes& header, int level) {
    const std::vector<Step> steps = {{0, 1, 0, 3, header}, {1, 1, 0, 0, {}}};
    Bytes packed(compressBound(static_cast<uLong>(frame.size())));
    uLongf packedSize = static_cast<uLongf>(packed.size());
    Require(
        compress2(packed.data(), &packedSize, frame.data(), static_cast<uLong>(frame.size()), level) == Z_OK,
        "a frame can be deflated");
    packed.resize(packedSize);
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
    CheckAgainstSecond(steps, scope, limit, frame);
    if ((data[3] & 0x80) != 0) return;  // most of the time goes into deflating
    CheckRoundTrip(frame, steps.empty() ? Bytes{0, 0, 1} : steps[0].settings, data[3] % 10);
}

}  // namespace fuzz
