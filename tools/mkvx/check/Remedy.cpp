#include "check/Remedy.h"

#include <fmt/format.h>
#include <algorithm>
#include <cctype>

#include "base/Text.h"

namespace mkvx {
namespace {

constexpr char kResult[] = "mended.mkv";

bool needsNoQuotes(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           std::string("/._-+,:@%=").find(c) != std::string::npos;
}

}  // namespace

std::string shellWord(const std::string& path) {
    if (path == "-" || printable(path) != path) return "FILE";
    std::string word = path.compare(0, 1, "-") == 0 ? "./" + path : path;
    if (!word.empty() && std::all_of(word.begin(), word.end(), needsNoQuotes)) return word;
    for (size_t at = 0; (at = word.find('\'', at)) != std::string::npos; at += 4)
        word.replace(at, 1, "'\\''");
    return "'" + word + "'";
}

std::string remuxCommand(const std::string& path) {
    return fmt::format("mkvmerge --disable-lacing -o {} {}", kResult, shellWord(path));
}

std::string copyCommand(const std::string& path) {
    return fmt::format("ffmpeg -i {} -map 0 -c copy {}", shellWord(path), kResult);
}

std::string recodeCommand(const std::string& path, char kind, size_t ordinal, const std::string& encoder) {
    return fmt::format("ffmpeg -i {} -map 0 -c copy -c:{}:{} {} {}", shellWord(path), kind, ordinal, encoder,
                       kResult);
}

std::string webvttCommand(const std::string& path, size_t entry) {
    const std::string word = shellWord(path);
    return fmt::format(
        "mkvextract {} tracks {}:text.vtt && ffmpeg -i text.vtt text.srt && mkvmerge --disable-lacing -o {} "
        "--subtitle-tracks '!{}' {} text.srt",
        word, entry, kResult, entry, word);
}

std::string selectCommand(const std::string& path, const std::vector<size_t>& entries) {
    std::string maps;
    for (const size_t entry : entries) maps += fmt::format(" -map 0:{}", entry);
    return fmt::format("ffmpeg -i {}{} -c copy {}", shellWord(path), maps, kResult);
}

}  // namespace mkvx
