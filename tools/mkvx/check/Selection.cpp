#include "check/Selection.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <iostream>

#include "base/Failure.h"

namespace mkvx {
namespace {

constexpr char kStandardInput[] = "-";

// FNV-1a, 64 bits, mixed at the end: the low bits of similar paths would fall together otherwise.
uint64_t hashOf(const std::string& path) {
    uint64_t hash = 0xCBF29CE484222325u;
    for (const char c : path) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
    hash = (hash ^ (hash >> 33)) * 0xFF51AFD7ED558CCDu;
    return hash ^ (hash >> 33);
}

std::string parseShard(const std::string& text, Shard& shard) {
    const char* end = text.data() + text.size();
    const auto part = std::from_chars(text.data(), end, shard.part);
    const bool hasBoth = part.ec == std::errc() && part.ptr != end && *part.ptr == '/';
    if (hasBoth) {
        const auto of = std::from_chars(part.ptr + 1, end, shard.of);
        if (of.ec == std::errc() && of.ptr == end && shard.part >= 1 && shard.part <= shard.of) return {};
    }
    return text + " is no share: I/N, with I from 1 to N";
}

std::vector<std::string> readList(std::istream& list, char separator) {
    std::vector<std::string> paths;
    for (std::string path; std::getline(list, path, separator);)
        if (!path.empty()) paths.push_back(path);
    return paths;
}

}  // namespace

bool Shard::holds(const std::string& path) const {
    return hashOf(path) % of == part - 1;
}

void addSelectionOptions(Arguments& command, Selection& selection) {
    command.value("PATH", selection.paths, "Files, and folders to search for Matroska files");
    command.value("--files-from", selection.listFile, "A file with a path a line; - for standard input")
        .called("FILE");
    command.flag("--null,-0", selection.isNulSeparated, "The paths of --files-from end with a zero byte");
    command
        .text(
            "--shard", [&selection](const std::string& text) { return parseShard(text, selection.shard); },
            "Only the I-th of N shares of the files, by a hash of their paths")
        .called("I/N");
}

std::vector<std::string> namedPaths(const Selection& selection) {
    std::vector<std::string> paths = selection.paths;
    if (selection.listFile.empty() && paths.empty())
        throw UsageFailure("PATH is required, or --files-from (mkvx check --help tells more)");
    if (selection.listFile.empty()) return paths;
    const char separator = selection.isNulSeparated ? '\0' : '\n';
    std::ifstream file;
    const bool isInput = selection.listFile == kStandardInput;
    if (!isInput) file.open(selection.listFile, std::ios::binary);
    if (!isInput && !file) throw FileFailure(selection.listFile, std::strerror(errno));
    for (std::string& path : readList(isInput ? std::cin : file, separator)) paths.push_back(std::move(path));
    if (paths.empty()) throw FileFailure(selection.listFile, "names no file");
    return paths;
}

std::vector<FoundFile> shareOf(const Shard& shard, std::vector<FoundFile> files) {
    files.erase(std::remove_if(files.begin(), files.end(),
                               [&](const FoundFile& file) { return !shard.holds(file.path); }),
                files.end());
    return files;
}

}  // namespace mkvx
