#include "library/Model.h"

#include <fmt/format.h>

#include "base/Json.h"

namespace mkvx {
namespace {

Json keysJson(const std::vector<FindingKey>& findings) {
    Json list = Json::array();
    for (const FindingKey& finding : findings) {
        Json json;
        if (finding.track) json["track"] = *finding.track;
        json["code"] = finding.code;
        json["weight"] = toString(finding.weight);
        list.push_back(std::move(json));
    }
    return list;
}

Json countJson(const FindingCount& count) {
    Json json;
    json["code"] = count.code;
    json["weight"] = toString(count.weight);
    json["files"] = count.files;
    setPath(json, "example", count.example);
    return json;
}

Json fileJson(const JudgedFile& file) {
    Json json;
    setPath(json, "file", file.path);
    json["verdict"] = toString(file.verdict);
    json["reason"] = file.reason;
    json["size"] = file.size;
    return json;
}

Json differenceJson(const FileDifference& file) {
    Json json;
    setPath(json, "file", file.path);
    json["change"] = toString(file.kind);
    if (file.before) json["before"] = toString(*file.before);
    if (file.after) json["after"] = toString(*file.after);
    json["reason"] = file.reason;
    json["gone"] = keysJson(file.gone);
    json["new"] = keysJson(file.came);
    return json;
}

}  // namespace

void printJson(const Summary& summary, std::FILE* out) {
    Json json = newResult();
    json["files"] = summary.files;
    json["bytes"] = summary.bytes;
    json["superseded"] = summary.superseded;
    json["verdicts"] = Json::object();
    for (const Verdict verdict : kVerdicts) {
        const auto count = summary.verdicts.find(verdict);
        json["verdicts"][toString(verdict)] = count == summary.verdicts.end() ? 0 : count->second;
    }
    json["findings"] = Json::array();
    for (const FindingCount& count : summary.findings) json["findings"].push_back(countJson(count));
    json["worst"] = Json::array();
    for (const JudgedFile& file : summary.worst) json["worst"].push_back(fileJson(file));
    json["unlisted"] = summary.unlisted;
    fmt::print(out, "{}", dump(json));
}

void printJson(const LibraryDifference& difference, std::FILE* out) {
    Json json = newResult();
    json["same"] = difference.same;
    json["files"] = Json::array();
    for (const FileDifference& file : difference.files) json["files"].push_back(differenceJson(file));
    fmt::print(out, "{}", dump(json));
}

}  // namespace mkvx
