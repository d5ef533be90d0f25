#include "compare/Compare.h"

#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>
#include <chrono>

#include "base/Child.h"
#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Text.h"
#include "compare/Probe.h"
#include "source/OpenSource.h"

namespace mkvx {
namespace {

using Clock = std::chrono::steady_clock;

// The lines of one child, one at a time: a child that is ahead waits in its pipe.
class ProbeLines {
  public:
    ProbeLines(const std::string& file, Clock::time_point deadline, const std::function<void(int)>& work)
        : mFile(file), mDeadline(deadline), mChild(work) {
        next();
    }

    // Nothing at the end.
    const std::optional<std::string>& line() const { return mLine; }
    bool isIn(Part part) const { return mLine && (*mLine)[0] == char('0' + int(part)); }
    void next() {
        size_t end;
        while ((end = mText.find('\n', mDone)) == std::string::npos)
            if (!take()) return finish();
        mLine = mText.substr(mDone, end - mDone);
        mDone = end + 1;
        if ((*mLine)[0] == kProbeFailed) throw UsageFailure(mLine->substr(1));
    }

  private:
    // Blocks for more; false at the end.
    bool take() {
        mText.erase(0, mDone);
        mDone = 0;
        waitForMore();
        char chunk[65536];
        const ssize_t got = ::read(mChild.outputFd(), chunk, sizeof chunk);
        if (got > 0) mText.append(chunk, size_t(got));
        return got > 0;
    }

    void waitForMore() {
        constexpr int kTickMs = 50;
        pollfd polled = {mChild.outputFd(), POLLIN, 0};
        while (::poll(&polled, 1, kTickMs) <= 0) {
            throwIfInterrupted(mFile);
            if (Clock::now() > mDeadline) throw FileFailure(mFile, "is not compared within the time limit");
        }
    }

    // How the process ended is its last line.
    void finish() {
        mLine.reset();
        if (mIsFinished) return;
        mIsFinished = true;
        if (const auto end = mChild.finish())
            mLine = fmt::format("{}the process ends: {}", int(Part::kEnd), printable(*end));
    }

    const std::string& mFile;
    const Clock::time_point mDeadline;
    Child mChild;
    std::string mText;
    size_t mDone = 0;
    std::optional<std::string> mLine;
    bool mIsFinished = false;
};

uint64_t* countOf(ComparedFile& compared, Part part) {
    switch (part) {
        case Part::kTracks:
            return &compared.tracks;
        case Part::kUnits:
            return &compared.reads;
        case Part::kSeeks:
            return &compared.seeks;
        default:
            return nullptr;
    }
}

std::string textOf(const ProbeLines& lines, Part part) {
    return lines.isIn(part) ? lines.line()->substr(1) : std::string();
}

void comparePart(Part part, ProbeLines& base, ProbeLines& other, ComparedFile& compared) {
    while (base.isIn(part) || other.isIn(part)) {
        const std::string one = textOf(base, part), two = textOf(other, part);
        if (one != two) {
            compared.differences.push_back({part, one, two});
            break;
        }
        if (uint64_t* count = countOf(compared, part)) ++*count;
        base.next();
        other.next();
    }
    while (base.isIn(part)) base.next();  // what follows a difference says nothing new
    while (other.isIn(part)) other.next();
}

}  // namespace

ComparedFile compareFile(const std::string& path, const CompareOptions& options) {
    const auto open = [&] { return withFaults(openCached(path, options.source), options.source.faults); };
    const auto deadline = Clock::now() + std::chrono::milliseconds(int64_t(options.timeLimit * 1000));
    const auto prober = [&](const std::string& plugin) {
        return [&, plugin](int out) { probe(plugin, open, options.seeks, out); };
    };
    ProbeLines base(path, deadline, prober(options.base));
    ProbeLines other(path, deadline, prober(options.other));
    ComparedFile compared;
    compared.path = path;
    for (const Part part : {Part::kOpening, Part::kTracks, Part::kUnits, Part::kSeeks, Part::kEnd})
        comparePart(part, base, other, compared);
    return compared;
}

}  // namespace mkvx
