#include "source/Options.h"

#include <CLI/CLI.hpp>
#include <charconv>

namespace mkvx {
namespace {

constexpr char kGroup[] = "Byte source (any command)";

// "N" or "N+": one read, or that one and all that follow.
std::string parseFailAt(const std::string& text, FaultOptions& faults) {
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, faults.failAt);
    faults.failsFromOn = rest != end && *rest == '+';
    const bool isWhole = rest + (faults.failsFromOn ? 1 : 0) == end;
    return error == std::errc() && isWhole && faults.failAt > 0 ? ""
                                                                : text + " is no number of a read: N or N+";
}

void addFaults(CLI::App& app, FaultOptions& faults) {
    app.add_flag("--short-reads{100}", faults.shortEvery,
                 "Each N-th read of more than one byte gives half; 100 unless said as --short-reads=N")
        ->group(kGroup);
    app.add_option(
           "--fail-at",
           [&faults](const CLI::results_t& texts) {
               const std::string problem = parseFailAt(texts[0], faults);
               if (!problem.empty()) throw CLI::ValidationError("--fail-at", problem);
               return true;
           },
           "The N-th read fails, or with N+ that one and all that follow")
        ->type_name("N[+]")
        ->group(kGroup);
    app.add_flag("--no-size", faults.noSize, "The source does not know its size")->group(kGroup);
    app.add_option("--late", faults.lateUs, "Each read takes so many microseconds more")
        ->check(CLI::Range(uint64_t{0}, uint64_t{10000000}))
        ->type_name("US")
        ->group(kGroup);
}

void addUrl(CLI::App& app, UrlOptions& url) {
    const auto add = [&app](const char* name, uint32_t& value, uint32_t most, const char* type,
                            const char* help) {
        app.add_option(name, value, help)
            ->check(CLI::Range(uint32_t{1}, most))
            ->type_name(type)
            ->capture_default_str()
            ->group(kGroup);
    };
    add("--url-block", url.blockKib, 16384, "KIB", "URLs are fetched and kept in blocks of this size");
    add("--url-cache", url.cacheMib, 4096, "MIB", "How much of a URL is kept in memory");
    add("--url-timeout", url.timeoutS, 3600, "SECONDS", "How long to wait for a connection, and for data");
    add("--url-spool", url.spoolMib, 1048576, "MIB",
        "The most that is kept on disk of a file whose server refuses ranges");
}

}  // namespace

void addSourceOptions(CLI::App& app, SourceOptions& options) {
    addFaults(app, options.faults);
    addUrl(app, options.url);
}

}  // namespace mkvx
