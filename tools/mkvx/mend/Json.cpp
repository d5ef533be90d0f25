#include "mend/Model.h"

#include <fmt/format.h>

#include "base/Json.h"

namespace mkvx {
namespace {

Json findingsJson(const std::vector<FindingOfTrack>& findings) {
    Json list = Json::array();
    for (const FindingOfTrack& found : findings) {
        Json json;
        if (found.track) json["track"] = *found.track;
        json["code"] = found.finding.code;
        json["weight"] = toString(found.finding.weight);
        json["sentence"] = found.finding.sentence;
        list.push_back(std::move(json));
    }
    return list;
}

Json attemptJson(const MendAttempt& attempt) {
    Json json;
    json["commands"] = attempt.commands;
    if (!attempt.problem.empty()) json["problem"] = attempt.problem;
    return json;
}

Json verdictJson(Verdict verdict, const std::string& reason) {
    return {{"verdict", toString(verdict)}, {"reason", reason}};
}

}  // namespace

void printJson(const MendReport& report, std::FILE* out) {
    Json json = newResult();
    json["file"] = report.file;
    json["output"] = report.output;
    json["written"] = report.after.has_value();
    json["before"] = verdictJson(report.before, report.reason);
    if (report.after) json["after"] = verdictJson(*report.after, report.reasonAfter);
    json["attempts"] = Json::array();
    for (const MendAttempt& attempt : report.attempts) json["attempts"].push_back(attemptJson(attempt));
    json["left_out"] = report.leftOut;
    json["gone"] = findingsJson(report.changes.gone);
    json["stays"] = findingsJson(report.changes.stays);
    json["new"] = findingsJson(report.changes.came);
    fmt::print(out, "{}", dump(json));
}

}  // namespace mkvx
