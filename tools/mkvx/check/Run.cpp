#include "check/Run.h"

#include <fmt/format.h>
#include <poll.h>
#include <atomic>
#include <algorithm>
#include <chrono>
#include <list>

#include "base/Child.h"
#include "base/Interrupt.h"
#include "base/SharedMemory.h"
#include "base/Text.h"
#include "check/FileStamp.h"
#include "check/Json.h"

namespace mkvx {
namespace {

using Clock = std::chrono::steady_clock;

// A count that a child adds to and this process reads.
class SharedCount {
  public:
    SharedCount() : mMemory(sizeof(Count)), mCount(new (mMemory.get()) Count(0)) {}

    void add(uint64_t more) { mCount->fetch_add(more, std::memory_order_relaxed); }
    uint64_t get() const { return mCount->load(std::memory_order_relaxed); }

  private:
    using Count = std::atomic<uint64_t>;
    SharedMemory mMemory;
    Count* mCount;
};

// The child tells its result twice where the second may not come: one line each.
void work(const ExtractorPlugin& plugin, const std::string& path, const SourceOptions& source,
          const CheckDepth& depth, int out) {
    const auto tell = [out](const CheckedFile& checked) { writeAll(out, toJsonLine(checked) + "\n"); };
    tell(examine(plugin, path, source, depth, tell));
}

struct Job {
    using Work = std::function<void(int out, SharedCount& gone)>;
    Job(size_t place_, const std::string& path, const Work& work_, Clock::time_point deadline_)
        : place(place_),
          stamp(stampOf(path)),
          child([&](int out) { work_(out, gone); }),
          deadline(deadline_) {}

    size_t place;
    std::optional<FileStamp> stamp;  // before it was opened
    SharedCount gone;                // bytes, counted twice; in place before the child is
    Child child;
    Clock::time_point deadline;
    bool isLate = false;
};

// The last whole line, empty when there is none.
std::string lastLine(const std::string& output) {
    const size_t end = output.rfind('\n');
    if (end == std::string::npos) return {};
    const size_t start = end == 0 ? std::string::npos : output.rfind('\n', end - 1);
    return output.substr(start == std::string::npos ? 0 : start + 1,
                         end - (start == std::string::npos ? 0 : start + 1));
}

CheckedFile partialResult(const std::string& line) {
    if (line.empty()) return {};
    return fromJsonLine(line);
}

CheckedFile resultOf(Job& job, const FoundFile& file, double timeLimit) {
    const std::optional<std::string> end = job.child.finish();
    CheckedFile checked = partialResult(lastLine(job.child.output()));
    if (job.isLate) {
        checked.findings.push_back({"time_limit", Weight::kLoss,
                                    fmt::format("its examination was cut off after {} s", timeLimit),
                                    std::nullopt, ""});
        checked.verdict = Verdict::kUndecided;
        checked.reason = checked.findings.back().sentence;
    } else if (end) {
        checked.findings.push_back({"stops_while_read", Weight::kFatal,
                                    "reading it ends the process: " + printable(*end), std::nullopt, ""});
        decide(checked);
    }
    checked.path = file.path;
    if (checked.size == 0) checked.size = file.size;
    if (job.stamp) checked.mtimeUs = job.stamp->mtimeUs;
    return checked;
}

class Run {
  public:
    Run(const ExtractorPlugin& plugin, const std::vector<FoundFile>& files, const CheckRunOptions& options,
        const std::function<void(size_t, CheckedFile)>& onResult)
        : mPlugin(plugin),
          mFiles(files),
          mOptions(options),
          mOnResult(onResult),
          mProgress("check", options.progress) {
        mState.filesTotal = files.size();
        for (const FoundFile& file : files) mState.bytesTotal += file.size;
    }

    bool run() {
        while (!wasInterrupted() && (mNext < mFiles.size() || !mJobs.empty())) {
            while (mJobs.size() < mOptions.jobs && mNext < mFiles.size()) start();
            if (!mJobs.empty()) wait();
            tell();
        }
        return !wasInterrupted();  // what still runs ends with mJobs
    }

  private:
    void start() {
        const std::string& path = mFiles[mNext].path;
        if (!mFiles[mNext].problem.empty()) return tellProblem(mNext++);
        const auto limit = std::chrono::milliseconds(int64_t(mOptions.timeLimit * 1000));
        const auto examination = [&](int out, SharedCount& gone) {
            CheckDepth depth = mOptions.depth;
            depth.onBytes = [&gone](uint64_t bytes) { gone.add(bytes); };
            work(mPlugin, path, mOptions.source, depth, out);
        };
        mJobs.emplace_back(mNext++, path, examination, Clock::now() + limit);
    }

    // Of what cannot be examined.
    void tellProblem(size_t place) {
        CheckedFile checked;
        checked.path = mFiles[place].path;
        checked.reason = mFiles[place].problem;
        ++mState.files;
        mProgress.hide();
        mOnResult(place, std::move(checked));
    }

    void tell() {
        ProgressState state = mState;
        for (const Job& job : mJobs) state.bytes += std::min(job.gone.get() / 2, mFiles[job.place].size);
        mProgress.reach(state);
    }

    void wait() {
        std::vector<pollfd> polled;
        for (const Job& job : mJobs) polled.push_back({job.child.outputFd(), POLLIN, 0});
        constexpr int kTickMs = 100;  // for deadlines and progress
        if (::poll(polled.data(), polled.size(), kTickMs) < 0) return;
        const Clock::time_point now = Clock::now();
        size_t i = 0;
        for (auto job = mJobs.begin(); job != mJobs.end(); ++i) {
            bool isRunning = true;
            if (polled[i].revents != 0) isRunning = job->child.takeOutput();
            if (isRunning && !job->isLate && now >= job->deadline) {
                job->isLate = true;
                job->child.kill();
            }
            if (isRunning) {
                ++job;
                continue;
            }
            finish(*job);
            job = mJobs.erase(job);
        }
    }

    void finish(Job& job) {
        const FoundFile& file = mFiles[job.place];
        ++mState.files;
        mState.bytes += file.size;
        CheckedFile checked = resultOf(job, file, mOptions.timeLimit);
        mProgress.hide();
        mOnResult(job.place, std::move(checked));
    }

    const ExtractorPlugin& mPlugin;
    const std::vector<FoundFile>& mFiles;
    const CheckRunOptions& mOptions;
    const std::function<void(size_t, CheckedFile)>& mOnResult;
    std::list<Job> mJobs;
    size_t mNext = 0;
    ProgressState mState;
    Progress mProgress;
};

}  // namespace

bool checkFiles(const ExtractorPlugin& plugin, const std::vector<FoundFile>& files,
                const CheckRunOptions& options,
                const std::function<void(size_t place, CheckedFile checked)>& onResult) {
    return Run(plugin, files, options, onResult).run();
}

}  // namespace mkvx
