#include "check/Text.h"

#include <fmt/format.h>
#include <algorithm>

#include "base/Terminal.h"
#include "base/Text.h"
#include "check/Plan.h"

namespace mkvx {
namespace {

std::string painted(const Paint& paint, Verdict verdict) {
    const std::string text = describe(verdict);
    switch (verdict) {
        case Verdict::kPlays:
            return paint.good(text);
        case Verdict::kPlaysWithLosses:
        case Verdict::kUndecided:
            return paint.odd(text);
        case Verdict::kStops:
            return paint.worst(text);
        default:
            return paint.bad(text);
    }
}

// As a hex dump has it, with the text beside it where it is one.
std::string bytesText(const Evidence& evidence) {
    std::string hex, text;
    for (const uint8_t byte : evidence.bytes) {
        hex += fmt::format(" {:02X}", byte);
        text += byte >= 0x20 && byte < 0x7F ? char(byte) : '\0';
    }
    if (evidence.bytes.size() < evidence.size) hex += " ...";
    const bool isText = text.size() > 2 && text.find('\0') == std::string::npos;
    return isText ? fmt::format("{} \"{}\"", hex, text) : hex;
}

class CheckPrinter {
  public:
    explicit CheckPrinter(std::FILE* out) : mOut(out), mPaint(out) {}

    void verdictLine(const CheckedFile& checked) {
        line(0, fmt::format("{}: {}{}{}", mPaint.strong(printable(checked.path)),
                            painted(mPaint, checked.verdict), checked.reason.empty() ? "" : ": ",
                            printable(checked.reason)));
    }

    void details(const CheckedFile& checked) {
        mRemedyOfAll = remedyOfAll(checked);
        for (const TrackVerdict& track : checked.tracks) trackLines(track);
        for (const Finding& finding : checked.findings) {
            if (finding.sentence == checked.reason && !finding.evidence && finding.remedy.empty()) continue;
            findingLines(finding, 2);
        }
        if (!mRemedyOfAll.empty())
            fmt::print(mOut, "  remedy for all that can be mended: {}\n", mRemedyOfAll.text);
        if (checked.shares) sharesLine(*checked.shares, checked.size);
    }

  private:
    void line(size_t indent, const std::string& text) { printFitted(mOut, indent, text); }

    void trackLines(const TrackVerdict& track) {
        const std::string about =
            fmt::format("{} {} ({}, {})", mPaint.strong("track number"), track.number, track.kind,
                        track.codecId.empty() ? "no CodecID" : printable(track.codecId));
        if (track.isOffered())
            line(2, fmt::format("{}: {} as index {}, {}{}{}", about, mPaint.good("offered"), *track.index,
                                printable(track.mime), configText(track),
                                unitsText(track) + decoderText(track)));
        if (track.dropped) {
            const bool isFatal = track.dropped->weight == Weight::kFatal;
            line(2, fmt::format("{}: {}: {}", about,
                                isFatal ? mPaint.worst("ends the process") : mPaint.bad("dropped"),
                                printable(track.dropped->sentence)));
            proofLines(*track.dropped, 6);
        }
        for (const Finding& finding : track.findings) findingLines(finding, 4);
    }

    static std::string configText(const TrackVerdict& track) {
        std::string text = track.stream.text();
        if (!text.empty()) text = ", " + text;
        if (track.config.empty()) text += ", no configuration";
        for (const ConfigSummary& record : track.config)
            text += fmt::format(", {} {} bytes", record.key, record.size);
        return text;
    }

    static std::string decoderText(const TrackVerdict& track) {
        return track.decoder.empty() ? std::string() : "; decoder " + printable(track.decoder);
    }

    static std::string unitsText(const TrackVerdict& track) {
        if (!track.counts || track.counts->units == 0) return {};
        return "; " + counted(track.counts->units, "unit") + ", " + counted(track.counts->unitBytes, "byte");
    }

    void findingLines(const Finding& finding, size_t indent) {
        line(indent, fmt::format("{}: {}", weightText(finding.weight), printable(finding.sentence)));
        proofLines(finding, indent + 2);
    }

    std::string weightText(Weight weight) {
        switch (weight) {
            case Weight::kNote:
                return mPaint.faint("note");
            case Weight::kLoss:
                return mPaint.odd("lost");
            case Weight::kMute:
                return mPaint.bad("does not play");
            case Weight::kFatal:
                return mPaint.worst("ends the process");
        }
        return {};
    }

    // A command stays one line, to be copied.
    void proofLines(const Finding& finding, size_t indent) {
        if (finding.evidence) line(indent, mPaint.faint(evidenceText(*finding.evidence)));
        if (!finding.remedy.empty() && !isPartOfAll(finding.remedy))
            fmt::print(mOut, "{:{}}remedy: {}\n", "", indent, finding.remedy.text);
    }

    bool isPartOfAll(const Remedy& remedy) const { return !mRemedyOfAll.empty() && remedy.hasCommand(); }

    void sharesLine(const ByteShares& shares, uint64_t size) {
        std::string text;
        const auto add = [&](uint64_t share, const char* name) {
            if (share > 0)
                text += fmt::format("{}{:.1f} % {}", text.empty() ? "" : ", ",
                                    100.0 * double(share) / double(size), name);
        };
        add(shares.delivered, "delivered");
        add(shares.notOffered, "not offered");
        add(shares.metadata, "metadata");
        add(shares.padding, "padding");
        add(shares.damaged, "damaged");
        add(shares.unreachable, "unreachable");
        line(2, fmt::format("{} bytes: {}", size, text));
    }

    std::FILE* mOut;
    Paint mPaint;
    Remedy mRemedyOfAll;  // of the file whose details are printed
};

}  // namespace

std::string evidenceText(const Evidence& evidence) {
    const std::string bytes =
        fmt::format("{} at {}:{}", counted(evidence.size, "byte"), evidence.dataOffset, bytesText(evidence));
    return evidence.element.empty()
               ? bytes
               : fmt::format("{} at {}, its {}", evidence.element, evidence.offset, bytes);
}

void renderChecked(const CheckedFile& checked, bool isBrief, std::FILE* out) {
    CheckPrinter printer(out);
    printer.verdictLine(checked);
    if (!isBrief) printer.details(checked);
}

std::string countsText(const VerdictCounts& counts) {
    uint64_t files = 0;
    std::string each;
    for (const auto& [verdict, count] : counts) {
        files += count;
        each = fmt::format("{} {}{}{}", count, describe(verdict), each.empty() ? "" : ", ", each);
    }
    return fmt::format("{} files{}{}", files, each.empty() ? "" : ": ", each);
}

void renderCheckSummary(std::vector<CheckedFile> files, std::FILE* out) {
    std::stable_sort(files.begin(), files.end(),
                     [](const CheckedFile& a, const CheckedFile& b) { return a.verdict > b.verdict; });
    TextTable table(
        {{"VERDICT"}, {"TRACKS", TextTable::Align::kRight}, {"MB", TextTable::Align::kRight}, {"FILE"}});
    VerdictCounts counts;
    for (const CheckedFile& file : files) {
        const auto offered = std::count_if(file.tracks.begin(), file.tracks.end(),
                                           [](const TrackVerdict& track) { return track.isOffered(); });
        table.addRow({describe(file.verdict), fmt::format("{}/{}", offered, file.tracks.size()),
                      fmt::format("{:.1f}", double(file.size) / 1e6), printable(file.path)});
        ++counts[file.verdict];
    }
    fmt::print(out, "\n{}{}\n", table.str(), countsText(counts));
}

}  // namespace mkvx
