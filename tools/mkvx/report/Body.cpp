// What the page says without a script: verdict, facts, findings, tracks, and the tables that need no drawing.
#include <fmt/format.h>
#include <algorithm>

#include "base/Text.h"
#include "check/File.h"
#include "check/Plan.h"
#include "check/Text.h"
#include "report/Html.h"
#include "report/Page.h"
#include "source/OpenSource.h"

namespace mkvx {
namespace {

using html::escaped;
using html::grouped;

const char* kindOf(Verdict verdict) {
    if (verdict == Verdict::kPlays) return "good";
    return verdict == Verdict::kStops || verdict == Verdict::kNothingPlays ? "bad" : "odd";
}

const char* kindOf(Weight weight) {
    return weight == Weight::kNote ? "" : weight == Weight::kLoss ? "odd" : "bad";
}

// ---- commands, to be run in the folder of the file

std::string replaced(std::string text, const std::string& what, const std::string& by) {
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size()))
        text.replace(at, what.size(), by);
    return text;
}

// Each word stays on one line where it fits: at its hyphens a command would be hard to read.
std::string commandMarkup(const std::string& line) {
    std::string markup;
    for (size_t at = 0; at < line.size();) {
        const size_t end = std::min(line.find(' ', at), line.size());
        markup += "<span>" + escaped(std::string_view(line).substr(at, end - at)) + "</span>";
        if (end < line.size()) markup += " ";
        at = end + 1;
    }
    return "<code class=\"command\">" + markup + "</code>";
}

// A page travels; the folders of the machine that made it would mean nothing elsewhere.
std::string inItsFolder(const ReportPage& page, const std::string& text) {
    const std::string& path = page.checked.path;
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos || isUrl(path)) return text;
    return replaced(text, shellWord(path), shellWord(path.substr(slash + 1)));
}

std::string remedyItem(const ReportPage& page, const Remedy& remedy, const char* lead) {
    if (remedy.empty()) return {};
    if (!remedy.hasCommand()) return html::span("remedy", lead + escaped(inItsFolder(page, remedy.text)));
    const std::string line = shellLine(remedy.command);
    const size_t found = remedy.text.rfind(line);  // behind advice; a chain of commands is all command
    const size_t begin = found == std::string::npos ? 0 : found;
    const std::string advice = inItsFolder(page, remedy.text.substr(0, begin));
    const std::string command = inItsFolder(page, remedy.text.substr(begin));
    return html::span("remedy", lead + escaped(advice) + commandMarkup(command));
}

// ---- findings

// The remedies of findings that one command mends together are told once, in its place.
class FindingList {
  public:
    explicit FindingList(const ReportPage& page) : mPage(page), mOfAll(remedyOfAll(page.checked)) {}

    std::string items(const std::vector<Finding>& findings) const {
        std::string list;
        for (const Finding& finding : findings) list += item(finding, weightOf(finding.weight));
        return list.empty() ? list : "<ul class=\"plain\">" + list + "</ul>";
    }

    std::string item(const Finding& finding, const std::string& lead) const {
        std::string inner = html::span(kindOf(finding.weight), lead + html::sentence(finding.sentence));
        if (finding.evidence) inner += html::span("proof", html::sentence(evidenceText(*finding.evidence)));
        const bool isPartOfAll = !mOfAll.empty() && finding.remedy.hasCommand();
        if (!isPartOfAll) inner += remedyItem(mPage, finding.remedy, "Remedy: ");
        return "<li>" + inner + "</li>\n";
    }

    std::string remedyForAll() const {
        return remedyItem(mPage, mOfAll, "Remedy for all that can be mended: ");
    }

  private:
    static std::string weightOf(Weight weight) {
        static const char* const kLeads[] = {"Note: ", "Lost: ", "Does not play: ", "Ends the process: "};
        return kLeads[size_t(weight)];
    }

    const ReportPage& mPage;
    const Remedy mOfAll;
};

bool hasCommands(const CheckedFile& checked) {
    const auto any = [](const std::vector<Finding>& findings) {
        return std::any_of(findings.begin(), findings.end(),
                           [](const Finding& finding) { return finding.remedy.hasCommand(); });
    };
    return any(checked.findings) ||
           std::any_of(checked.tracks.begin(), checked.tracks.end(), [&](const TrackVerdict& track) {
               return any(track.findings) || (track.dropped && track.dropped->remedy.hasCommand());
           });
}

std::string findingsInner(const ReportPage& page) {
    const FindingList list(page);
    const std::string forAll = list.remedyForAll();
    std::string inner = list.items(page.checked.findings);
    if (!forAll.empty()) inner += "<p>" + forAll + "</p>\n";
    if (hasCommands(page.checked))
        inner += html::paragraph("Commands are for the folder of the file, and write a new one.");
    return inner;
}

// Of what reading would have told; empty where it was read.
std::string notExamined(const ReportPage& page) {
    if (page.isRead) return {};
    const Verdict verdict = page.checked.verdict;
    const char* why = verdict == Verdict::kStops       ? "whoever reads this file ends over it"
                      : verdict == Verdict::kUndecided ? "the time limit came first"
                                                       : "the plug-in does not open this file";
    return html::paragraph(fmt::format(
        "Not examined: what arrives over time, seeks, layout, damage, chapters and attachments; {}.", why));
}

// ---- the head

std::string fact(const char* name, const std::string& value) {
    return value.empty() ? value : fmt::format("<div><dt>{}</dt><dd>{}</dd></div>\n", name, value);
}

std::string durationFact(const ReportPage& page) {
    if (page.durationUs > 0) return clockTime(page.durationUs);
    return page.isRead ? "none that seeks can use" : "";
}

std::string averageFact(const ReportPage& page) {
    if (page.durationUs <= 0 || page.checked.size == 0) return {};
    return fmt::format("{} kbit/s",
                       grouped(uint64_t(double(page.checked.size) * 8e3 / double(page.durationUs))));
}

std::string offeredFact(const ReportPage& page) {
    const std::vector<TrackVerdict>& tracks = page.checked.tracks;
    if (tracks.empty()) return {};
    const auto offered = std::count_if(tracks.begin(), tracks.end(),
                                       [](const TrackVerdict& track) { return track.isOffered(); });
    return fmt::format("{} of {} offered", grouped(uint64_t(offered)), grouped(tracks.size()));
}

std::string headOf(const ReportPage& page) {
    const CheckedFile& checked = page.checked;
    std::string head = fmt::format(
        "<p id=\"verdict\"><span class=\"state {}\">{}</span>{}</p>\n", kindOf(checked.verdict),
        describe(checked.verdict),
        checked.reason.empty() ? std::string() : ": " + html::sentence(printable(checked.reason)));
    head += "<dl id=\"facts\" class=\"facts\">\n" + fact("Title", html::text(page.title)) +
            fact("Container", html::text(page.info.containerMime)) +
            fact("Document type", html::text(page.docType)) +
            fact("Size", checked.size > 0 ? html::bytes(checked.size) : std::string()) +
            fact("Duration", durationFact(page)) + fact("Average", averageFact(page)) +
            fact("Tracks", offeredFact(page)) + fact("Muxer", html::text(page.muxingApp)) +
            fact("Written by", html::text(page.writingApp)) + "</dl>\n";
    return head;
}

// ---- tracks

std::string formatOf(const TrackInfo& info) {
    if (info.width && info.height) return fmt::format("{} × {}", *info.width, *info.height);
    std::string text = info.sampleRate ? grouped(uint64_t(std::max(*info.sampleRate, 0))) + " Hz" : "";
    if (info.channels) text += fmt::format("{}{} ch", text.empty() ? "" : ", ", *info.channels);
    return text;
}

std::string configOf(const TrackVerdict& track) {
    std::string text;
    for (const ConfigSummary& record : track.config)
        text += fmt::format("{}{} {} B", text.empty() ? "" : ", ", escaped(record.key), grouped(record.size));
    return text;
}

std::string unitsOf(const TrackVerdict& track) {
    if (!track.isOffered() || !track.counts) return {};
    if (track.counts->units == 0) return "0";
    return fmt::format("{}, {}", grouped(track.counts->units), html::exactBytes(track.counts->unitBytes));
}

std::string stateOf(const TrackVerdict& track, const FindingList& list) {
    std::string state;
    if (track.isOffered())
        state = html::span(plays(track) ? "state good" : "state odd",
                           fmt::format("offered as index {}", *track.index));
    std::string items = track.findings.empty() ? std::string() : list.items(track.findings);
    if (track.dropped) {
        const bool isFatal = track.dropped->weight == Weight::kFatal;
        state = html::span("state bad", isFatal ? "ends the process" : "dropped");
        items = "<ul class=\"plain\">" + list.item(*track.dropped, "") + "</ul>" + items;
    }
    return "<div>" + state + items + "</div>";
}

std::vector<std::string> rowOf(const ReportPage& page, const TrackVerdict& track, const FindingList& list) {
    const bool isDescribed = track.index && *track.index < page.info.tracks.size();
    const TrackInfo info = isDescribed ? page.info.tracks[*track.index] : TrackInfo();
    return {grouped(track.number),
            stateOf(track, list),
            escaped(track.kind),
            html::text(track.mime),
            html::text(track.codecId),
            formatOf(info),
            html::text(info.language.value_or("")),
            unitsOf(track),
            configOf(track)};
}

std::string listedNote(size_t listed, uint64_t all) {
    if (listed >= all) return {};
    return html::paragraph(fmt::format("Listed: the first {} of {}.", grouped(listed), grouped(all)));
}

std::string tracksInner(const ReportPage& page) {
    const std::vector<TrackVerdict>& tracks = page.checked.tracks;
    if (tracks.empty())
        return page.isRead ? html::paragraph("No track description could be read.", "odd") : std::string();
    const FindingList list(page);
    std::vector<std::vector<std::string>> rows;
    for (size_t i = 0; i < std::min(tracks.size(), ReportPage::kMostRows); ++i)
        rows.push_back(rowOf(page, tracks[i], list));
    return "<div id=\"track-table\">" +
           html::table("Every track of the file, in its order",
                       {"Number", "On the device", "Kind", "MIME type", "Codec ID", "Format", "Language",
                        "Units", "Configuration"},
                       rows) +
           "</div>" + listedNote(rows.size(), tracks.size());
}

// ---- layout and damage

std::string explained(const std::string& element) {
    if (element == "damaged") return "damaged: skipped to find the next element";
    if (element == "not reached") return "not reached: behind the last readable element";
    return element == "Segment header" ? "Segment (its header)" : element;
}

std::string percent(uint64_t part, uint64_t whole) {
    const double share = whole > 0 ? 100.0 * double(part) / double(whole) : 0;
    if (share > 0 && share < 0.001) return "&lt; 0.001 %";
    return fmt::format("{:.{}f} %", share, share < 0.1 ? 3 : 1);
}

std::string elementTable(const ReportPage& page) {
    std::vector<std::pair<std::string, uint64_t>> sorted(page.layout.bytesByName.begin(),
                                                         page.layout.bytesByName.end());
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto& a, const auto& b) { return a.second > b.second; });
    std::vector<std::vector<std::string>> rows;
    rows.reserve(sorted.size());
    for (const auto& [name, size] : sorted)
        rows.push_back({escaped(explained(name)), grouped(size), percent(size, page.checked.size)});
    return rows.empty() ? std::string()
                        : html::table("Bytes by element", {"Element", "#Bytes", "#Share"}, rows);
}

std::string shareTable(const ReportPage& page) {
    if (!page.checked.shares) return {};
    const ByteShares& shares = *page.checked.shares;
    std::vector<std::vector<std::string>> rows;
    const auto add = [&](const char* what, uint64_t size) {
        if (size > 0) rows.push_back({what, grouped(size), percent(size, page.checked.size)});
    };
    add("payload that is delivered", shares.delivered);
    add("payload of tracks that are not offered, and beside frames", shares.notOffered);
    add("headers, descriptions, attachments", shares.metadata);
    add("padding and checksums", shares.padding);
    add("damaged", shares.damaged);
    add("behind what is looked at", shares.unreachable);
    return "<h3>What becomes of the bytes</h3>" +
           html::table("Share of the file", {"Bytes that are", "#Bytes", "#Share"}, rows);
}

std::string damageTable(const ReportPage& page) {
    std::vector<std::vector<std::string>> rows;
    if (page.layout.missing > 0)
        rows.push_back({"the Segment goes on behind the end of the file", grouped(page.checked.size),
                        grouped(page.layout.missing)});
    for (const Region& region : page.layout.regions)
        if (region.name == "damaged" || region.name == "not reached")
            rows.push_back(
                {escaped(explained(region.name)), grouped(region.begin), grouped(region.end - region.begin)});
    for (const LossRow& loss : page.losses)
        rows.push_back({escaped(loss.what), grouped(loss.position), loss.size > 0 ? grouped(loss.size) : ""});
    if (rows.empty())
        return html::paragraph("No byte of this file was skipped, and nothing was lost in reading it.",
                               "good");
    return html::table("What could not be read", {"What", "#At byte", "#Bytes"}, rows) +
           (page.isLossListFull ? html::paragraph("There may be more: the list of losses is full.") : "");
}

std::string layoutInner(const ReportPage& page) {
    if (!page.isRead) return {};
    return "<div id=\"layout-chart\"></div>\n" + elementTable(page) + shareTable(page) + "<h3>Damage</h3>" +
           damageTable(page);
}

// ---- chapters and attachments

struct ChapterRows {
    std::vector<std::vector<std::string>> rows;
    uint64_t count = 0;

    // Each behind the one that it is part of. The depth is bounded by the reader.
    void add(const std::vector<Chapter>& chapters, size_t edition, size_t depth) {
        for (const Chapter& chapter : chapters) {
            ++count;
            if (rows.size() < ReportPage::kMostRows) rows.push_back(rowOf(chapter, edition, depth));
            add(chapter.nested, edition, depth + 1);
        }
    }

  private:
    static std::vector<std::string> rowOf(const Chapter& chapter, size_t edition, size_t depth) {
        const ChapterTitle title = chapter.titles.empty() ? ChapterTitle() : chapter.titles.front();
        std::string indent, flags = chapter.isHidden ? "hidden" : "";
        for (size_t i = 0; i < depth; ++i) indent += "– ";
        if (!chapter.isEnabled) flags += flags.empty() ? "disabled" : ", disabled";
        return {clockTime(chapter.startUs),
                chapter.endUs ? clockTime(*chapter.endUs) : "",
                indent + html::text(title.text),
                html::text(title.language),
                edition > 0 ? std::to_string(edition + 1) : "",
                flags};
    }
};

std::string chaptersInner(const ReportPage& page) {
    ChapterRows chapters;
    for (size_t i = 0; i < page.chapters.editions.size(); ++i) chapters.add(page.chapters.editions[i], i, 0);
    if (chapters.rows.empty()) return {};
    return "<div id=\"chapter-table\">" +
           html::table("", {"Start", "End", "Title", "Language", "#Edition", "Flags"}, chapters.rows) +
           "</div>" + listedNote(chapters.rows.size(), chapters.count);
}

std::string attachmentsInner(const ReportPage& page) {
    const std::vector<Attachment>& files = page.attachments.files;
    if (files.empty()) return {};
    std::vector<std::vector<std::string>> rows;
    for (size_t i = 0; i < std::min(files.size(), ReportPage::kMostRows); ++i)
        rows.push_back({html::text(files[i].name), html::text(files[i].mime),
                        html::text(files[i].description), grouped(files[i].size), grouped(files[i].offset)});
    return "<div id=\"attachment-table\">" +
           html::table("", {"Name", "MIME type", "Description", "#Bytes", "#At byte"}, rows) + "</div>" +
           listedNote(rows.size(), files.size());
}

// What reading found none of.
std::string noneOf(const ReportPage& page) {
    if (!page.isRead) return {};
    const bool hasChapters = !chaptersInner(page).empty(), hasFiles = !page.attachments.files.empty();
    if (hasChapters && hasFiles) return {};
    return html::paragraph(fmt::format("No {}.", hasChapters ? "attachments"
                                                 : hasFiles  ? "chapters"
                                                             : "chapters, no attachments"));
}

}  // namespace

ReportBody reportBody(const ReportPage& page) {
    ReportBody body;
    body.head = headOf(page);
    body.findings = html::section("findings", "The file as a whole", findingsInner(page) + notExamined(page));
    body.tracks = html::section("tracks", "Tracks", tracksInner(page));
    body.layout = html::section("layout", "Layout and damage", layoutInner(page));
    body.rest = html::section("chapters", "Chapters", chaptersInner(page)) +
                html::section("attachments", "Attachments", attachmentsInner(page)) + noneOf(page);
    return body;
}

}  // namespace mkvx
