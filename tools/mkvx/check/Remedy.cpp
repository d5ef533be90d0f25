#include "check/Remedy.h"

#include <fmt/format.h>
#include <algorithm>
#include <cctype>
#include <iterator>

#include "base/Text.h"

namespace mkvx {
namespace {

constexpr char kResult[] = "mended.mkv";

// In the order of Remedy::Action.
constexpr const char* kActionNames[] = {"none", "advice", "rewrite", "copy", "recode", "drop", "arrange"};

using Words = std::vector<std::string>;

bool needsNoQuotes(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           std::string("/._-+,:@%=").find(c) != std::string::npos;
}

std::string quoted(std::string word) {
    if (!word.empty() && std::all_of(word.begin(), word.end(), needsNoQuotes)) return word;
    for (size_t at = 0; (at = word.find('\'', at)) != std::string::npos; at += 4)
        word.replace(at, 1, "'\\''");
    return "'" + word + "'";
}

Remedy remedyOf(Remedy::Action action, Words command) {
    Remedy remedy;
    remedy.action = action;
    remedy.text = shellLine(command);
    remedy.command = std::move(command);
    return remedy;
}

Words ffmpeg(const std::string& path, const Words& more) {
    Words command = {"ffmpeg", "-i", pathWord(path)};
    command.insert(command.end(), more.begin(), more.end());
    command.push_back(kResult);
    return command;
}

}  // namespace

const char* toString(Remedy::Action action) {
    return kActionNames[static_cast<size_t>(action)];
}

Remedy::Action actionNamed(const std::string& name) {
    const auto found = std::find(std::begin(kActionNames), std::end(kActionNames), name);
    return found == std::end(kActionNames) ? Remedy::Action::kNone
                                           : Remedy::Action(found - std::begin(kActionNames));
}

std::string pathWord(const std::string& path) {
    if (path == "-" || printable(path) != path) return "FILE";
    return path.compare(0, 1, "-") == 0 ? "./" + path : path;
}

std::string shellWord(const std::string& path) {
    return quoted(pathWord(path));
}

std::string shellLine(const Words& command) {
    std::string line;
    for (const std::string& word : command) line += (line.empty() ? "" : " ") + quoted(word);
    return line;
}

Words encoderArguments(const std::string& stream, const std::string& encoder) {
    Words words = {"-c:" + stream, encoder};
    // Decoders of that era take eight bits and half the chroma samples, whatever the source has.
    if (encoder == "libx264") words.insert(words.end(), {"-pix_fmt:" + stream, "yuv420p"});
    return words;
}

Remedy remuxCommand(const std::string& path) {
    return remedyOf(Remedy::Action::kRewrite,
                    {"mkvmerge", "--disable-lacing", "-o", kResult, pathWord(path)});
}

Remedy copyCommand(const std::string& path) {
    return remedyOf(Remedy::Action::kCopy, ffmpeg(path, {"-map", "0", "-c", "copy"}));
}

Remedy recodeCommand(const std::string& path, char kind, size_t ordinal, const std::string& encoder) {
    Words words = {"-map", "0", "-c", "copy"};
    const Words how = encoderArguments(fmt::format("{}:{}", kind, ordinal), encoder);
    words.insert(words.end(), how.begin(), how.end());
    Remedy remedy = remedyOf(Remedy::Action::kRecode, ffmpeg(path, words));
    remedy.encoder = encoder;
    return remedy;
}

Remedy dropCommand(const std::string& path, char kind, size_t ordinal) {
    return remedyOf(
        Remedy::Action::kDrop,
        ffmpeg(path, {"-map", "0", "-map", fmt::format("-0:{}:{}", kind, ordinal), "-c", "copy"}));
}

Remedy webvttCommand(const std::string& path, size_t entry) {
    const std::string word = shellWord(path);
    const std::string line = fmt::format(
        "mkvextract {} tracks {}:text.vtt && ffmpeg -i text.vtt text.srt && mkvmerge --disable-lacing -o {} "
        "--subtitle-tracks '!{}' {} text.srt",
        word, entry, kResult, entry, word);
    Remedy remedy = remedyOf(Remedy::Action::kRecode, {"sh", "-c", line});
    remedy.encoder = "srt";
    remedy.text = line;
    return remedy;
}

Remedy selectCommand(const std::string& path, const std::vector<size_t>& entries) {
    Words words;
    for (const size_t entry : entries) words.insert(words.end(), {"-map", fmt::format("0:{}", entry)});
    words.insert(words.end(), {"-c", "copy"});
    return remedyOf(Remedy::Action::kArrange, ffmpeg(path, words));
}

}  // namespace mkvx
