#include "mend/Mend.h"

#include <fmt/format.h>
#include <algorithm>
#include <charconv>
#include <filesystem>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/StagedFile.h"
#include "base/Tool.h"
#include "check/Plan.h"
#include "mend/Changes.h"

namespace mkvx {
namespace {

constexpr int kMkvmergeWarned = 1;  // and has written its file

// A plan, and the tool that carries it out.
struct Way {
    MendPlan plan;
    bool byMkvmerge;

    std::vector<ToolCommand> commands(const std::string& path, const std::string& out) const {
        return byMkvmerge ? mkvmergeCommands(path, out) : ffmpegCommands(plan, path, out);
    }
};

CheckedFile examined(const ExtractorPlugin& plugin, const std::string& path, const CheckRunOptions& options) {
    CheckedFile checked;
    const bool isComplete = checkFiles(plugin, {{path, 0}}, options,
                                       [&](size_t, CheckedFile result) { checked = std::move(result); });
    if (!isComplete) throwIfInterrupted(path);
    return checked;
}

bool areInstalled(const std::vector<ToolCommand>& commands) {
    return std::all_of(commands.begin(), commands.end(),
                       [](const ToolCommand& command) { return isInstalled(command[0]); });
}

// The best first, of those whose tools are there.
std::vector<Way> waysFor(const CheckedFile& checked, const MendPlan& plan) {
    std::vector<Way> ways;
    if (plan.isRewriting()) ways.push_back({plan, plan.prefersMkvmerge});
    ways.push_back({plan, plan.isRewriting() && !plan.prefersMkvmerge});
    if (const auto less = planWithoutUnoffered(checked, plan)) ways.push_back({*less, false});
    ways.erase(std::remove_if(ways.begin(), ways.end(),
                              [](const Way& way) { return !areInstalled(way.commands("", "")); }),
               ways.end());
    if (ways.empty())
        throw FileFailure(checked.path, plan.isRewriting()
                                            ? "neither ffmpeg nor mkvmerge is in PATH, which could mend it"
                                            : "ffmpeg (and mkvextract for WebVTT) is not in PATH, which "
                                              "could mend it");
    return ways;
}

// What makes no difference to the result: no questions, a report of progress, and no file or network address
// but those that are named.
ToolCommand quietly(ToolCommand command) {
    if (command[0] == "mkvmerge") command.insert(command.begin() + 1, "--gui-mode");
    if (command[0] != "ffmpeg") return command;
    const ToolCommand more = {"-nostdin", "-hide_banner",        "-v",        "error", "-progress",
                              "pipe:1",   "-protocol_whitelist", "file,pipe", "-f",    "matroska"};
    command.insert(command.begin() + 1, more.begin(), more.end());
    return command;
}

// From what the tools print while they work.
class ToolProgress {
  public:
    ToolProgress(const std::string& what, ProgressStyle style, int64_t durationUs)
        : mDurationUs(durationUs), mProgress(what, style) {}

    void take(const std::string& line) {
        if (const auto us = numberBehind(line, "out_time_us=")) {
            if (mDurationUs > 0) mState.share = double(*us) / double(mDurationUs);
        } else if (const auto bytes = numberBehind(line, "total_size=")) {
            mState.bytes = uint64_t(std::max<int64_t>(0, *bytes));
        } else if (const auto percent = numberBehind(line, "#GUI#progress ")) {
            mState.share = double(*percent) / 100;
        }
        mProgress.reach(mState);
    }

  private:
    static std::optional<int64_t> numberBehind(const std::string& line, const std::string& name) {
        if (line.compare(0, name.size(), name) != 0) return std::nullopt;
        int64_t number = 0;
        const char* end = line.data() + line.size();
        return std::from_chars(line.data() + name.size(), end, number).ec == std::errc()
                   ? std::optional<int64_t>(number)
                   : std::nullopt;
    }

    int64_t mDurationUs;
    ProgressState mState;
    Progress mProgress;
};

class Mending {
  public:
    Mending(const ExtractorPlugin& plugin, const MendOptions& options)
        : mPlugin(plugin), mOptions(options), mBefore(examined(plugin, options.file, options.check)) {
        if (mBefore.verdict == Verdict::kNoMatroska || mBefore.verdict == Verdict::kUnreadable)
            throw FileFailure(options.file, mBefore.reason);
        mReport.file = options.file;
        mReport.output = options.output;
        mReport.before = mBefore.verdict;
        mReport.reason = mBefore.reason;
        mReport.isDryRun = options.isDryRun;
    }

    MendReport run() {
        const std::optional<MendPlan> plan = planFor(mBefore);
        if (plan && mOptions.isDryRun)
            propose(*plan);
        else if (plan)
            carryOut(waysFor(mBefore, *plan));
        if (!mReport.after) mReport.changes.stays = unmended(plan && mOptions.isDryRun);
        return std::move(mReport);
    }

  private:
    void propose(const MendPlan& plan) {
        mReport.attempts.push_back(
            {commandsOf(plan, pathWord(mOptions.file), pathWord(mOptions.output)), std::string()});
        noteLeftOut(plan);
    }

    // Of a file that stays as it is; without those that the proposed plan mends.
    std::vector<FindingOfTrack> unmended(bool isPlanned) const {
        std::vector<FindingOfTrack> all = allFindings(mBefore);
        if (isPlanned)
            all.erase(
                std::remove_if(all.begin(), all.end(),
                               [](const FindingOfTrack& found) { return found.finding.remedy.hasCommand(); }),
                all.end());
        return all;
    }

    void noteLeftOut(const MendPlan& plan) {
        mReport.leftOut.clear();
        for (const size_t entry : plan.leftOut) mReport.leftOut.push_back(mBefore.tracks[entry].number);
    }

    void carryOut(const std::vector<Way>& ways) {
        StagedFile staged(mOptions.output);
        for (const Way& way : ways) {
            mReport.attempts.push_back(
                {way.commands(pathWord(mOptions.file), pathWord(mOptions.output)), std::string()});
            if (attempt(way, staged)) return;
            staged.clear();
        }
    }

    bool attempt(const Way& way, StagedFile& staged) {
        std::string& problem = mReport.attempts.back().problem;
        problem = write(way, staged);
        if (!problem.empty()) return false;
        const CheckedFile after = examined(mPlugin, staged.file(), mOptions.check);
        const MendChanges changes = changesOf(mBefore, after, way.plan);
        problem = judge(changes);
        if (!problem.empty()) return false;
        staged.putInPlace();
        mReport.after = after.verdict;
        mReport.reasonAfter = after.reason;
        mReport.changes = changes;
        noteLeftOut(way.plan);
        return true;
    }

    // Empty, or what went wrong.
    std::string write(const Way& way, const StagedFile& staged) {
        const std::string path = std::filesystem::absolute(mOptions.file).string();
        const int64_t durationUs = mBefore.seeking ? mBefore.seeking->durationUs : 0;
        for (const ToolCommand& command : way.commands(path, StagedFile::name())) {
            ToolProgress progress(command[0], mOptions.check.progress, durationUs);
            const ToolEnd end = runTool(quietly(command), staged.folder(),
                                        [&](const std::string& line) { progress.take(line); });
            throwIfInterrupted(mOptions.file);
            const int most = command[0] == "mkvmerge" ? kMkvmergeWarned : 0;
            if (end.code > most)
                return fmt::format("{} ends with {}: {}", command[0], end.code,
                                   end.lastWords.empty() ? "it does not say why" : end.lastWords);
        }
        return {};
    }

    static std::string judge(const MendChanges& changes) {
        const bool isMended = std::any_of(changes.gone.begin(), changes.gone.end(),
                                          [](const auto& gone) { return gone.finding.remedy.hasCommand(); });
        if (!isMended) return "what it should mend stays";
        for (const FindingOfTrack& came : changes.came)
            if (came.finding.weight > Weight::kNote)
                return fmt::format("the new file has a fault that the old one has not: {}{}",
                                   came.track ? fmt::format("track number {}: ", *came.track) : "",
                                   came.finding.sentence);
        return {};
    }

    const ExtractorPlugin& mPlugin;
    const MendOptions& mOptions;
    const CheckedFile mBefore;
    MendReport mReport;
};

}  // namespace

MendReport mendFile(const ExtractorPlugin& plugin, const MendOptions& options) {
    return Mending(plugin, options).run();
}

}  // namespace mkvx
