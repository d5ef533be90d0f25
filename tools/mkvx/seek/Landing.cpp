#include "seek/Landing.h"

#include <fmt/format.h>
#include <algorithm>
#include <charconv>
#include <string_view>

#include "base/Failure.h"
#include "device/TrackReader.h"

namespace mkvx {

void ReadRanges::note(uint64_t begin, uint64_t end) {
    mLastBegin = begin;
    if (!mRanges.empty()) {
        ByteRange& last = mRanges.back();
        const bool isNear = begin <= last.end + kJoined && end + kJoined >= last.begin;
        if (isNear || mRanges.size() == kMost) {
            last = {std::min(last.begin, begin), std::max(last.end, end)};
            return;
        }
    }
    mRanges.push_back({begin, end});
}

LandingProbe::LandingProbe(const Session& session, const TrackInfo& track)
    : mTrack(track), mBytes(new CountingSource(session.newBytes())) {
    const android::sp<android::MediaExtractor> extractor = session.plugin().open(mBytes, nullptr);
    if (extractor != nullptr) mSource = extractor->getTrack(track.index);
    if (mSource == nullptr || mSource->start() != android::OK)
        throw FileFailure(session.info().path,
                          fmt::format("the source of index {} does not start", track.index));
    mBytes->observe([this](off64_t offset, size_t, ssize_t got) {
        if (got > 0) mRanges.note(uint64_t(offset), uint64_t(offset) + uint64_t(got));
    });
}

LandingProbe::~LandingProbe() {
    mSource->stop();
    mBytes->observe(nullptr);
}

Landing LandingProbe::read(const android::MediaSource::ReadOptions* options) {
    const uint64_t readsBefore = mBytes->reads(), bytesBefore = mBytes->bytes();
    mRanges.clear();
    android::MediaBuffer* buffer = nullptr;
    Landing landing;
    if (mSource->read(&buffer, options) == android::OK && buffer != nullptr) {
        const BufferPtr owned(buffer);
        landing.unit = describeUnit(mTrack, *buffer, mSha1);
    }
    landing.reads = mBytes->reads() - readsBefore;
    landing.readBytes = mBytes->bytes() - bytesBefore;
    landing.position = mRanges.lastBegin();
    landing.ranges = mRanges.ranges();
    return landing;
}

namespace {

// The number that the whole text is.
std::optional<int64_t> wholeNumber(std::string_view text) {
    int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<int64_t> digits(std::string_view text) {
    return text.empty() || text[0] == '-' ? std::nullopt : wholeNumber(text);
}

// "5", "5.25": microseconds below a minute.
std::optional<int64_t> parseSeconds(std::string_view text) {
    const size_t dot = text.find('.');
    const auto whole = digits(text.substr(0, dot));
    if (!whole || *whole > 59) return std::nullopt;
    if (dot == std::string_view::npos) return *whole * 1000000;
    std::string decimals(text.substr(dot + 1));
    if (decimals.size() > 6) return std::nullopt;
    const auto part = digits(decimals.append(6 - decimals.size(), '0'));
    if (!part || text.size() == dot + 1) return std::nullopt;
    return *whole * 1000000 + *part;
}

}  // namespace

std::optional<int64_t> parseTime(const std::string& text) {
    constexpr int64_t kMostHours = 2000000000;  // 64 bits of microseconds hold more
    std::string_view rest = text;
    if (rest.find(':') == std::string_view::npos) return wholeNumber(rest);
    const bool negative = rest[0] == '-';
    if (negative) rest.remove_prefix(1);
    const size_t first = rest.find(':'), second = rest.find(':', first + 1);
    if (second == std::string_view::npos) return std::nullopt;
    const auto hours = digits(rest.substr(0, first));
    const auto minutes = digits(rest.substr(first + 1, second - first - 1));
    const auto seconds = parseSeconds(rest.substr(second + 1));
    if (!hours || !minutes || !seconds || *hours > kMostHours || *minutes > 59) return std::nullopt;
    const int64_t us = (*hours * 60 + *minutes) * 60000000 + *seconds;
    return negative ? -us : us;
}

void addLanding(Json& object, const Landing& landing) {
    object["landed"] = nullptr;
    if (const auto& unit = landing.unit)
        object["landed"] = {
            {"time_us", unit->timeUs}, {"sync", int(unit->sync)}, {"size", unit->size}, {"sha1", unit->sha1}};
    object["reads"] = landing.reads;
    object["read_bytes"] = landing.readBytes;
}

std::vector<TextTable::Column> landingColumns(std::vector<TextTable::Column> first) {
    constexpr auto kRight = TextTable::Align::kRight;
    for (const char* title : {"LANDED", "KEY", "SIZE", "READS", "BYTES READ"})
        first.push_back({title, kRight});
    first.push_back({"SHA-1"});
    return first;
}

void addLandingRow(TextTable& table, std::vector<std::string> first, const Landing& landing) {
    const auto& unit = landing.unit;
    first.insert(first.end(), {unit ? clockTime(unit->timeUs) : "end", unit && unit->sync ? "key" : "",
                               unit ? std::to_string(unit->size) : "", std::to_string(landing.reads),
                               std::to_string(landing.readBytes), unit ? unit->sha1 : ""});
    table.addRow(std::move(first));
}

}  // namespace mkvx
