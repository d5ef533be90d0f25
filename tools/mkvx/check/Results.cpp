#include "check/Results.h"

#include <fmt/format.h>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <string_view>

#include "base/Failure.h"
#include "check/Json.h"

namespace mkvx {
namespace {

// A result that is not whole; what begins otherwise was never one, and is nobody's to cut off.
bool isTorn(std::string_view line) {
    constexpr std::string_view kStart = "{\"mkvx\":";
    return line.substr(0, kStart.size()) == kStart.substr(0, line.size());
}

}  // namespace

uint64_t readResults(const std::string& path, const std::function<void(CheckedFile)>& onResult) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw FileFailure(path, std::strerror(errno));
    uint64_t whole = 0, number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        if (file.eof() && isTorn(line)) break;
        whole += line.size() + 1;
        if (line.empty()) continue;
        try {
            for (CheckedFile& checked : fromJsonResult(line)) onResult(std::move(checked));
        } catch (const std::exception&) {
            throw FileFailure(path, fmt::format("line {} is no result of mkvx check --format jsonl", number));
        }
    }
    if (file.bad()) throw FileFailure(path, std::strerror(errno));
    return whole;
}

}  // namespace mkvx
