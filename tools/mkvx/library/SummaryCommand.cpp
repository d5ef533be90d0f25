// mkvx summary RESULTS...: what runs of check come to together.
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/OutputFile.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "library/Summary.h"

namespace mkvx {
namespace {

struct Options {
    std::vector<std::string> results;
    std::string page;
    uint64_t mostListed = 100;
    Format format = Format::kTable;
};

int run(const Options& options) {
    for (const std::string& results : options.results) requireOtherFile(results, options.page);
    const Summary summary = summaryOf(readJudged(options.results), options.mostListed);
    if (!options.page.empty()) {
        ExtractFile page(options.page);
        page.write(summaryPage(summary));
        page.close();
    }
    print(summary, options.format, stdout);
    return kExitDone;
}

}  // namespace

void addSummaryCommand(CommandLine& line) {
    auto options = std::make_shared<Options>();
    Arguments command =
        line.command("summary", "What runs of check come to together: verdicts, findings, the worst files");
    command.value("RESULTS", options->results, "Files with results of mkvx check: JSON lines or JSON")
        .required();
    command.value("-o,--output", options->page, "Write a page for the browser too").called("PAGE.html");
    command
        .value("--list", options->mostListed,
               "How many files to list that do not play whole, the worst first")
        .showDefault();
    addFormatOption(command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx summary part-1.jsonl");
    command.action([options] { return run(*options); });
}

}  // namespace mkvx
