#include "check/Plan.h"

#include <fmt/format.h>
#include <algorithm>
#include <functional>
#include <map>

namespace mkvx {
namespace {

using Action = Remedy::Action;
using Stream = MendPlan::Stream;

constexpr char kResult[] = "mended.mkv";

char letterOf(const TrackVerdict& track) {
    for (const char* kind : {"video", "audio", "subtitle"})
        if (track.kind == kind) return kind[0];
    return 0;
}

// Those that a command stands for.
std::vector<const Finding*> mendable(const TrackVerdict& track) {
    std::vector<const Finding*> found;
    if (track.dropped && track.dropped->remedy.hasCommand()) found.push_back(&*track.dropped);
    for (const Finding& finding : track.findings)
        if (finding.remedy.hasCommand()) found.push_back(&finding);
    return found;
}

std::string specifier(char kind, size_t ordinal) {
    return fmt::format("{}:{}", kind, ordinal);
}

class Planner {
  public:
    explicit Planner(const CheckedFile& checked) : mChecked(checked) {}

    std::optional<MendPlan> plan() {
        for (size_t entry = 0; entry < mChecked.tracks.size(); ++entry) take(entry);
        for (const Finding& finding : mChecked.findings)
            if (finding.remedy.hasCommand()) takeOfFile(finding);
        const bool keepsNone = mPlan.streams.empty() && !mChecked.tracks.empty();
        if (mPlan.findings == 0 || keepsNone) return std::nullopt;
        arrange();
        mPlan.prefersMkvmerge = mPlan.isRewriting() && !mWantsCopy;
        return std::move(mPlan);
    }

  private:
    void note(const Finding& finding) {
        ++mPlan.findings;
        mWantsCopy = mWantsCopy || finding.remedy.action == Action::kCopy;
    }

    // One that is coded again because the file cannot be written anew otherwise is told by the command alone.
    void takeOfFile(const Finding& finding) {
        note(finding);
        if (finding.remedy.action != Action::kRecode) return;
        const ToolCommand& words = finding.remedy.command;
        for (Stream& stream : mPlan.streams)
            if (stream.encoder.empty() &&
                std::count(words.begin(), words.end(), "-c:" + specifier(stream.kind, stream.ordinal)) > 0)
                stream.encoder = finding.remedy.encoder;
    }

    void take(size_t entry) {
        const TrackVerdict& track = mChecked.tracks[entry];
        const char kind = letterOf(track);
        const size_t ordinal = kind != 0 ? mOrdinals[kind]++ : 0;
        Stream stream{entry, kind, ordinal, "", false};
        bool isDropped = false;
        for (const Finding* finding : mendable(track)) {
            note(*finding);
            isDropped = isDropped || finding->remedy.action == Action::kDrop;
            if (finding->remedy.action == Action::kRecode && stream.encoder.empty())
                stream.encoder = finding->remedy.encoder;
        }
        stream.isWebVtt = !stream.encoder.empty() && track.codecId == "S_TEXT/WEBVTT";
        if (kind == 0) return;  // other kinds go as each muxer likes
        if (isDropped)
            mPlan.leftOut.push_back(entry);
        else
            mPlan.streams.push_back(std::move(stream));
    }

    bool isOffered(const Stream& stream) const {
        return !stream.encoder.empty() || mChecked.tracks[stream.entry].isOffered();
    }

    // Subtitles are heard by index and number: nothing may stand in front of them that is not offered.
    void arrange() {
        std::vector<Stream> ordered = mPlan.streams;
        std::stable_partition(ordered.begin(), ordered.end(),
                              [this](const Stream& stream) { return isOffered(stream); });
        bool meetsUnoffered = false;
        for (const Stream& stream : mPlan.streams) {
            const bool offered = isOffered(stream);
            if (offered && stream.kind == 's' && meetsUnoffered) mPlan.isArranged = true;
            meetsUnoffered = meetsUnoffered || !offered;
        }
        if (mPlan.isArranged) mPlan.streams = std::move(ordered);
    }

    const CheckedFile& mChecked;
    MendPlan mPlan;
    std::map<char, size_t> mOrdinals;
    bool mWantsCopy = false;
};

void append(ToolCommand& command, const ToolCommand& more) {
    command.insert(command.end(), more.begin(), more.end());
}

std::string textName(const Stream& stream) {
    return fmt::format("text{}.vtt", stream.entry);
}

std::vector<const Stream*> webVttOf(const MendPlan& plan) {
    std::vector<const Stream*> found;
    for (const Stream& stream : plan.streams)
        if (stream.isWebVtt) found.push_back(&stream);
    return found;
}

// What goes from where to where.
ToolCommand mapsOf(const MendPlan& plan) {
    const std::vector<const Stream*> texts = webVttOf(plan);
    ToolCommand words;
    if (texts.empty() && !plan.isArranged && plan.leftOut.empty()) return {"-map", "0"};
    for (const Stream& stream : plan.streams) {
        const auto text = std::find(texts.begin(), texts.end(), &stream);
        append(words, {"-map", text != texts.end() ? fmt::format("{}:0", text - texts.begin() + 1)
                                                   : "0:" + specifier(stream.kind, stream.ordinal)});
    }
    append(words, {"-map", "0:t?"});  // attachments
    if (texts.empty()) return words;
    for (size_t i = 0; i < plan.streams.size();
         ++i)  // the texts' languages and names stand in the first file
        append(words, {fmt::format("-map_metadata:s:{}", i),
                       "0:s:" + specifier(plan.streams[i].kind, plan.streams[i].ordinal)});
    return words;
}

ToolCommand codecsOf(const MendPlan& plan) {
    ToolCommand words = {"-c", "copy"};
    std::map<char, size_t> ordinals;  // in the new file
    for (const Stream& stream : plan.streams) {
        const size_t ordinal = ordinals[stream.kind]++;
        if (!stream.encoder.empty())
            append(words, encoderArguments(specifier(stream.kind, ordinal), stream.encoder));
    }
    return words;
}

}  // namespace

bool MendPlan::recodes() const {
    return std::any_of(streams.begin(), streams.end(),
                       [](const Stream& stream) { return !stream.encoder.empty(); });
}

std::optional<MendPlan> planFor(const CheckedFile& checked) {
    return Planner(checked).plan();
}

std::optional<MendPlan> planWithoutUnoffered(const CheckedFile& checked, const MendPlan& plan) {
    MendPlan less = plan;
    less.streams.clear();
    for (const Stream& stream : plan.streams) {
        const bool stays = !stream.encoder.empty() || checked.tracks[stream.entry].isOffered();
        if (stays)
            less.streams.push_back(stream);
        else
            less.leftOut.push_back(stream.entry);
    }
    less.prefersMkvmerge = false;
    if (less.streams.empty() || less.streams.size() == plan.streams.size()) return std::nullopt;
    return less;
}

std::vector<ToolCommand> ffmpegCommands(const MendPlan& plan, const std::string& path,
                                        const std::string& out) {
    std::vector<ToolCommand> commands;
    const std::vector<const Stream*> texts = webVttOf(plan);
    ToolCommand ffmpeg = {"ffmpeg", "-i", path}, extract = {"mkvextract", path, "tracks"};
    for (const Stream* text : texts) {
        extract.push_back(fmt::format("{}:{}", text->entry, textName(*text)));
        append(ffmpeg, {"-i", textName(*text)});
    }
    if (!texts.empty()) commands.push_back(extract);
    append(ffmpeg, mapsOf(plan));
    append(ffmpeg, codecsOf(plan));
    ffmpeg.push_back(out);
    commands.push_back(std::move(ffmpeg));
    return commands;
}

std::vector<ToolCommand> mkvmergeCommands(const std::string& path, const std::string& out) {
    return {{"mkvmerge", "--disable-lacing", "-o", out, path}};
}

std::vector<ToolCommand> commandsOf(const MendPlan& plan, const std::string& path, const std::string& out) {
    return plan.prefersMkvmerge ? mkvmergeCommands(path, out) : ffmpegCommands(plan, path, out);
}

std::string shellLine(const std::vector<ToolCommand>& commands) {
    std::string line;
    for (const ToolCommand& command : commands) line += (line.empty() ? "" : " && ") + shellLine(command);
    return line;
}

Remedy remedyOfAll(const CheckedFile& checked) {
    Remedy remedy;
    const std::optional<MendPlan> plan = planFor(checked);
    if (!plan || plan->findings < 2) return remedy;
    const std::vector<ToolCommand> commands = commandsOf(*plan, pathWord(checked.path), kResult);
    remedy.action = Action::kCopy;
    const std::string line = shellLine(commands);
    remedy.command = commands.size() == 1 ? commands[0] : ToolCommand{"sh", "-c", line};
    const bool isCut = std::any_of(checked.findings.begin(), checked.findings.end(),
                                   [](const Finding& finding) { return finding.code == "truncated"; });
    remedy.text = (isCut ? "fetch the file again; or, for what there is of it: " : "") + line;
    return remedy;
}

}  // namespace mkvx
