#include "library/Judged.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include "base/Interrupt.h"
#include "base/Terminal.h"
#include "check/Results.h"

namespace mkvx {
namespace {

void note(JudgedFile& file, std::optional<uint64_t> track, const std::vector<Finding>& findings) {
    for (const Finding& finding : findings) file.findings.insert({track, finding.code, finding.weight});
}

JudgedFile judgedOf(CheckedFile checked) {
    JudgedFile file;
    file.path = std::move(checked.path);
    file.verdict = checked.verdict;
    file.reason = std::move(checked.reason);
    file.size = checked.size;
    for (const TrackVerdict& track : checked.tracks) {
        if (track.dropped) file.findings.insert({track.number, track.dropped->code, track.dropped->weight});
        note(file, track.number, track.findings);
    }
    note(file, std::nullopt, checked.findings);
    return file;
}

}  // namespace

JudgedFiles readJudged(const std::vector<std::string>& resultFiles) {
    JudgedFiles judged;
    for (const std::string& path : resultFiles) {
        const uint64_t whole = readResults(path, [&](CheckedFile checked) {
            throwIfInterrupted(path);
            JudgedFile file = judgedOf(std::move(checked));
            const std::string name = file.path;
            if (!judged.byPath.insert_or_assign(name, std::move(file)).second) ++judged.superseded;
        });
        struct stat info {};
        if (::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && uint64_t(info.st_size) > whole)
            tell(fmt::format("{}: its last line has no end, and is passed over", path));
    }
    return judged;
}

}  // namespace mkvx
