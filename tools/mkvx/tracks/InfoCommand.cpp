// mkvx info FILE...: the containers and the tracks that the plug-in offers.
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Terminal.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "codecs/TrackStream.h"
#include "device/Session.h"
#include "tracks/Model.h"

namespace mkvx {
namespace {

struct Options {
    std::vector<std::string> files;
    bool readsRates = false;
    ProgressStyle progress = ProgressStyle::kLine;
    Format format = Format::kTable;
};

// Of entries with the same number the first, as blocks with that number are read.
std::map<uint32_t, DeclaredTrack> declaredTracks(const Session& session) {
    std::map<uint32_t, DeclaredTrack> byNumber;
    for (const DeclaredTrack& track : readDeclaredTracks(session.newBytes()))
        byNumber.try_emplace(uint32_t(track.number), track);
    return byNumber;
}

std::map<uint64_t, TrackRate> ratesOf(const Session& session, const DescribedFile& file,
                                      ProgressStyle style) {
    Progress progress(file.info.path, style);
    std::map<uint64_t, uint64_t> frameNs;
    for (const auto& [number, track] : file.declared)
        if (track.frameNs > 0) frameNs[number] = track.frameNs;
    return readRates(session.newBytes(), frameNs, [&](uint64_t position) { progress.reachBytes(position); });
}

DescribedFile describe(const ExtractorPlugin& plugin, const std::string& path, const Globals& globals,
                       const Options& options) {
    const Session session(plugin, path, globals.source);
    const DocumentFacts document = session.reader().head().document();
    DescribedFile file;
    file.info = session.info();
    file.title = document.title;
    file.muxingApp = document.muxingApp;
    file.writingApp = document.writingApp;
    file.declared = declaredTracks(session);
    for (const TrackInfo& track : file.info.tracks) file.streams.push_back(readStreamFacts(session, track));
    if (options.readsRates) file.rates = ratesOf(session, file, options.progress);
    throwIfInterrupted(path);
    if (file.info.tracks.empty())
        tell(fmt::format("{}: none of its {} tracks is offered (mkvx check says why)", path,
                         session.reader().head().trackCount()));
    return file;
}

// A single file that cannot be used ends the command; of several the others are described all the same.
int run(const Globals& globals, const Options& options) {
    const ExtractorPlugin plugin = loadPlugin(globals.plugin);
    if (options.files.size() == 1) {
        print(describe(plugin, options.files.front(), globals, options), options.format, stdout);
        return kExitDone;
    }
    int exitCode = kExitDone;
    bool isFirst = true;
    for (const std::string& path : options.files) {
        try {
            const DescribedFile file = describe(plugin, path, globals, options);
            if (!isFirst && options.format == Format::kTable) fmt::print("\n");
            print(file, options.format, stdout);
            isFirst = false;
        } catch (const FileFailure& failure) {
            if (wasInterrupted()) throw;
            std::fflush(stdout);
            tell(failure.what());
            exitCode = kExitFileUnusable;
        }
    }
    return exitCode;
}

}  // namespace

void addInfoCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command(
        "info", "The containers and the tracks that the plug-in offers, and what files say of them");
    command.value("FILE", options->files, "The files to describe").required();
    command.flag("--rates", options->readsRates,
                 "Read the headers of all blocks, to tell each track's own bit rate");
    addProgressOption(command, options->progress);
    addFormatOption(command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx info film.mkv\n         mkvx info --rates --json film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
