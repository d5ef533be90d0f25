#include "tracks/Sniff.h"

#include "base/Failure.h"
#include "base/Interrupt.h"

namespace mkvx {
namespace {

void sniffInto(const ExtractorPlugin& plugin, const std::string& file, const SourceOptions& source,
               SniffRun& run) {
    try {
        run.results.push_back(sniffFile(plugin, file, source));
        if (!run.results.back().claimed) run.complaints.push_back(file + ": is no Matroska or WebM file");
    } catch (const Interrupted&) {  // whoever asks next is told
    } catch (const FileFailure& failure) {
        if (wasInterrupted()) return;  // it may be the interruption's doing
        run.complaints.push_back(failure.what());
    }
}

}  // namespace

SniffRun sniffFiles(const ExtractorPlugin& plugin, const std::vector<std::string>& files,
                    const SourceOptions& source) {
    SniffRun run;
    for (const std::string& file : files) {
        if (wasInterrupted()) break;
        sniffInto(plugin, file, source, run);
    }
    return run;
}

}  // namespace mkvx
