#include "cli/SharedOptions.h"

#include <map>

#include "base/ParseTime.h"

namespace mkvx {

void addFormatOption(Arguments& command, Format& chosen, const FormatNames& names) {
    std::vector<std::string> known;
    for (const auto& name : names) known.push_back(name.first);
    const auto choose = [&chosen, names](const std::string& text) {
        for (const auto& name : names)
            if (name.first == text) chosen = name.second;
        return std::string();
    };
    const Argument format =
        command.text("--format", choose, "How to print the result").oneOf(known).showDefault(known.front());
    command
        .flag(
            "--json", [choose] { choose("json"); }, "Short for --format json")
        .insteadOf(format);
}

Argument addTrackOption(Arguments& command, std::optional<TrackChoice>& chosen, const std::string& help) {
    const auto choose = [&chosen](const std::string& text) {
        chosen = parseTrackChoice(text);
        return chosen ? std::string()
                      : text + " is neither an index (mkvx info lists them) nor # and a track number";
    };
    return command
        .text("--track", choose, help + ": its index (from 0, as info shows it), or # and its number")
        .called("INDEX|#NUMBER");
}

Argument addTimeOption(Arguments& command, const std::string& name, const TakeTime& take,
                       const std::string& help) {
    const auto act = [take](const std::string& text) {
        const std::optional<int64_t> us = parseTime(text);
        return us ? take(*us) : noTimeBecause(text);
    };
    return command.text(name, act, help + " (5s, 1:30, 00:01:30.5, 5000000us)").called("TIME");
}

void addProgressOption(Arguments& command, ProgressStyle& style) {
    static const std::map<std::string, ProgressStyle> kNames = {
        {"json", ProgressStyle::kJson}, {"line", ProgressStyle::kLine}, {"off", ProgressStyle::kOff}};
    const auto choose = [&style](const std::string& name) {
        style = kNames.at(name);
        return std::string();
    };
    command
        .text("--progress", choose, "How to tell progress on stderr: line (on a terminal only), json or off")
        .oneOf({"json", "line", "off"})
        .showDefault("line");
}

}  // namespace mkvx
