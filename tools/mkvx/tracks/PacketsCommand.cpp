// mkvx packets FILE: every unit that the plug-in delivers, track by track.
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Terminal.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "device/Session.h"
#include "tracks/Model.h"
#include "tracks/Packets.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::optional<TrackChoice> track;
    PacketOptions packets;
    Format format = Format::kTable;
};

// Empty for a good value, else what is wrong with it.
std::string requirePositive(const std::string& text) {
    return text.find_first_not_of("0") == std::string::npos ? "has to be more than 0" : "";
}

int run(const Globals& globals, const Options& options) {
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    const TrackInfo* only = chosenTrack(session.info(), options.track);
    if (session.info().tracks.empty())
        tell(fmt::format("{}: none of its {} tracks is offered (mkvx check says why)", options.file,
                         session.reader().head().trackCount()));
    const auto listing = newUnitListing(options.format, options.file, stdout);
    const uint64_t listed = listPackets(session, only, options.packets, *listing);
    listing->finish();
    throwIfInterrupted(options.file, counted(listed, "unit"));
    return kExitDone;
}

}  // namespace

void addPacketsCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    PacketOptions& packets = options->packets;
    Arguments command = line.command("packets", "Every unit that the plug-in delivers, track by track");
    command.value("FILE", options->file, "The file to read").required();
    addTrackOption(command, options->track, "Only this track");
    command.value("--limit", packets.limit, "At most this many units per track")
        .checked(requirePositive, "N > 0");
    command.flag("--all", packets.all, "Go on past units that cannot be read; a player stops at the first");
    addProgressOption(command, packets.progress);
    addFormatOption(command, options->format,
                    {{"table", Format::kTable},
                     {"json", Format::kJson},
                     {"jsonl", Format::kJsonLines},
                     {"csv", Format::kCsv}});
    command.footer("Example: mkvx packets --track 0 --limit 10 film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
