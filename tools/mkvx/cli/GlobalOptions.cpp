// The options of every command: the plug-in, the log, and what is made to go wrong with byte sources.
#include <charconv>

#include "base/Log.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"

namespace mkvx {
namespace {

constexpr int64_t kMostLateUs = 10000000;
constexpr char kHeading[] = "Byte source (any command)";

// "N" or "N+": one read, or that one and all that follow.
std::string parseFailAt(const std::string& text, FaultOptions& faults) {
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, faults.failAt);
    faults.failsFromOn = rest != end && *rest == '+';
    const bool isWhole = rest + (faults.failsFromOn ? 1 : 0) == end;
    return error == std::errc() && isWhole && faults.failAt > 0 ? ""
                                                                : text + " is no number of a read: N or N+";
}

void addFaults(Arguments& all, FaultOptions& faults) {
    all.flag("--short-reads{100}", faults.shortEvery,
             "Each N-th read of more than one byte gives half; 100 unless said as --short-reads=N")
        .within<uint64_t>(1, INT64_MAX)
        .under(kHeading);
    all.text(
           "--fail-at", [&faults](const std::string& text) { return parseFailAt(text, faults); },
           "The N-th read fails, or with N+ that one and all that follow")
        .called("N[+]")
        .under(kHeading);
    all.flag("--no-size", faults.noSize, "The source does not know its size").under(kHeading);
    const auto setLateness = [&faults](int64_t us) {
        faults.lateUs = uint64_t(us);
        return std::string(us < 0 || us > kMostLateUs ? "has to be between 0s and 10s" : "");
    };
    addTimeOption(all, "--late", setLateness, "Each read takes so much longer").under(kHeading);
}

void addUrl(Arguments& all, UrlOptions& url) {
    const auto add = [&all](const char* name, uint32_t& value, uint32_t most, const char* type,
                            const char* help) {
        all.value(name, value, help).within(uint32_t{1}, most).called(type).showDefault().under(kHeading);
    };
    add("--url-block", url.blockKib, 16384, "KIB", "URLs are fetched and kept in blocks of this size");
    add("--url-cache", url.cacheMib, 4096, "MIB", "How much of a URL is kept in memory");
    add("--url-timeout", url.timeoutS, 3600, "SECONDS", "How long to wait for a connection, and for data");
    add("--url-spool", url.spoolMib, 1048576, "MIB",
        "The most that is kept on disk of a file whose server refuses ranges");
}

}  // namespace

void addGlobalOptions(CommandLine& line, Globals& globals) {
    Arguments& all = line.everywhere();
    all.value("--plugin", globals.plugin, "The extractor plug-in (default: the one beside this program)");
    all.value("--log", globals.logLevel, "Show log records of this level and above on stderr")
        .oneOf(logLevels())
        .showDefault();
    addFaults(all, globals.source.faults);
    addUrl(all, globals.source.url);
}

}  // namespace mkvx
