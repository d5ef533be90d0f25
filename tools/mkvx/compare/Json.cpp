#include "compare/Model.h"

#include <fmt/format.h>

#include "base/Json.h"

namespace mkvx {

void printJson(const ComparedFile& compared, std::FILE* out) {
    Json json = newResult();
    setPath(json, "file", compared.path);
    json["same"] = compared.differences.empty();
    json["tracks"] = compared.tracks;
    json["reads"] = compared.reads;
    json["seeks"] = compared.seeks;
    json["differences"] = Json::array();
    for (const PartDifference& difference : compared.differences) {
        Json one;
        one["part"] = toString(difference.part);
        if (!difference.base.empty()) one["base"] = difference.base;
        if (!difference.other.empty()) one["other"] = difference.other;
        json["differences"].push_back(std::move(one));
    }
    fmt::print(out, "{}", dump(json));
}

}  // namespace mkvx
