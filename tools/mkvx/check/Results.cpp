#include "check/Results.h"

#include <fmt/format.h>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "base/Failure.h"
#include "check/Json.h"

namespace mkvx {

uint64_t readResults(const std::string& path, const std::function<void(CheckedFile)>& onResult) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw FileFailure(path, std::strerror(errno));
    uint64_t whole = 0, number = 0;
    for (std::string line; std::getline(file, line);) {
        if (file.eof()) break;  // torn
        ++number;
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
