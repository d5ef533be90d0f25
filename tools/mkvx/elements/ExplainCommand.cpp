// mkvx explain SUBJECT [FILE]: what an element means, and what stands at an offset.

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "elements/Explain.h"

namespace mkvx {
namespace {

struct Options {
    std::string subject, file;
    Format format = Format::kTable;
};

int run(const Globals& globals, const Options& options) {
    if (options.subject.empty()) {
        print(ElementList(), options.format, stdout);
        return kExitDone;
    }
    const Explanation explanation = explain(options.subject, options.file, globals.source);
    if (!explanation.occurrences) throwIfInterrupted(options.file);
    print(explanation, options.format, stdout);
    if (explanation.occurrences)
        throwIfInterrupted(options.file, counted(explanation.occurrences->count, "occurrence"));
    return kExitDone;
}

}  // namespace

void addExplainCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command(
        "explain", "What an element means and what the plug-in does with it, or what stands at an offset");
    command.value(
        "SUBJECT", options->subject,
        "An element's name, its ID in hexadecimal or, with FILE, a byte's offset in decimal; without "
        "it all elements are listed");
    command.value("FILE", options->file, "Look there: at the offset, or for the element");
    addFormatOption(command, options->format, {{"text", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx explain CodecPrivate film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
