#include "check/Json.h"

#include <stdexcept>

#include "base/Digest.h"
#include "base/Json.h"
#include "check/Plan.h"
#include "codecs/Json.h"

namespace mkvx {
namespace {

constexpr Weight kWeights[] = {Weight::kNote, Weight::kLoss, Weight::kMute, Weight::kFatal};

template <typename Value, size_t N>
Value named(const Value (&values)[N], const std::string& name) {
    for (const Value value : values)
        if (name == toString(value)) return value;
    throw std::runtime_error("unknown name: " + name);
}

std::vector<uint8_t> fromHex(const std::string& hex) {
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(uint8_t(std::stoul(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

Json evidenceJson(const Evidence& evidence) {
    Json json;
    if (!evidence.element.empty()) json["element"] = evidence.element;
    json["offset"] = evidence.offset;
    json["data_offset"] = evidence.dataOffset;
    json["size"] = evidence.size;
    json["bytes"] = toHex(evidence.bytes.data(), evidence.bytes.size());
    return json;
}

Evidence readEvidence(const Json& json) {
    return {json.value("element", ""), json.at("offset"), json.at("data_offset"), json.at("size"),
            fromHex(json.at("bytes"))};
}

Json remedyJson(const Remedy& remedy) {
    Json json;
    json["action"] = toString(remedy.action);
    if (!remedy.encoder.empty()) json["encoder"] = remedy.encoder;
    if (remedy.hasCommand()) json["command"] = remedy.command;
    json["text"] = remedy.text;
    return json;
}

Remedy readRemedy(const Json& json) {
    Remedy remedy;
    remedy.action = actionNamed(json.at("action"));
    remedy.encoder = json.value("encoder", "");
    remedy.command = json.value("command", std::vector<std::string>());
    remedy.text = json.at("text");
    return remedy;
}

Json findingJson(const Finding& finding) {
    Json json;
    json["code"] = finding.code;
    json["weight"] = toString(finding.weight);
    json["sentence"] = finding.sentence;
    if (finding.evidence) json["evidence"] = evidenceJson(*finding.evidence);
    if (!finding.remedy.empty()) json["remedy"] = remedyJson(finding.remedy);
    return json;
}

Finding readFinding(const Json& json) {
    Finding finding;
    finding.code = json.at("code");
    finding.weight = named(kWeights, json.at("weight"));
    finding.sentence = json.at("sentence");
    if (json.contains("evidence")) finding.evidence = readEvidence(json["evidence"]);
    if (json.contains("remedy")) finding.remedy = readRemedy(json["remedy"]);
    return finding;
}

Json findingsJson(const std::vector<Finding>& findings) {
    Json list = Json::array();
    for (const Finding& finding : findings) list.push_back(findingJson(finding));
    return list;
}

std::vector<Finding> readFindings(const Json& list) {
    std::vector<Finding> findings;
    for (const Json& json : list) findings.push_back(readFinding(json));
    return findings;
}

Json trackJson(const TrackVerdict& track) {
    Json json;
    json["number"] = track.number;
    json["type"] = track.type;
    json["kind"] = track.kind;
    json["codec_id"] = track.codecId;
    json["position"] = track.position;
    json["offered"] = track.isOffered();
    if (track.index) {
        json["index"] = *track.index;
        json["mime"] = track.mime;
        json["config"] = Json::object();
        for (const ConfigSummary& record : track.config)
            json["config"][record.key] = {{"size", record.size},
                                          {"bytes", toHex(record.bytes.data(), record.bytes.size())}};
    }
    if (const Json stream = toJson(track.stream); !stream.empty()) json["stream"] = stream;
    if (!track.decoder.empty()) json["decoder"] = track.decoder;
    if (track.dropped) json["dropped"] = findingJson(*track.dropped);
    json["findings"] = findingsJson(track.findings);
    if (const auto& counts = track.counts) {
        json["blocks"] = counts->blocks;
        json["units"] = counts->units;
        json["unit_bytes"] = counts->unitBytes;
        json["unreadable"] = counts->unreadable;
    }
    return json;
}

TrackVerdict readTrack(const Json& json) {
    TrackVerdict track;
    track.number = json.at("number");
    track.type = json.at("type");
    track.kind = json.at("kind");
    track.codecId = json.at("codec_id");
    track.position = json.at("position");
    if (json.contains("index")) {
        track.index = json["index"].get<size_t>();
        track.mime = json.at("mime");
        for (const auto& [key, record] : json.at("config").items())
            track.config.push_back({key, record.at("size"), fromHex(record.at("bytes"))});
    }
    if (json.contains("stream")) track.stream = streamFactsOf(json["stream"]);
    track.decoder = json.value("decoder", "");
    if (json.contains("dropped")) track.dropped = readFinding(json["dropped"]);
    track.findings = readFindings(json.at("findings"));
    if (json.contains("units"))
        track.counts = {json.at("blocks"), json.at("units"), json.at("unit_bytes"), json.at("unreadable")};
    return track;
}

Json sharesJson(const ByteShares& shares) {
    return {{"delivered", shares.delivered}, {"not_offered", shares.notOffered},
            {"metadata", shares.metadata},   {"padding", shares.padding},
            {"damaged", shares.damaged},     {"unreachable", shares.unreachable}};
}

ByteShares readShares(const Json& json) {
    return {json.at("delivered"), json.at("not_offered"), json.at("metadata"),
            json.at("padding"),   json.at("damaged"),     json.at("unreachable")};
}

Json seekingJson(const SeekFacts& seeking) {
    return {{"index", seeking.source},
            {"points", seeking.points},
            {"master_points", seeking.masterPoints},
            {"master_track", seeking.masterTrack},
            {"clusters", seeking.clusters},
            {"duration_us", seeking.durationUs}};
}

SeekFacts readSeeking(const Json& json) {
    return {json.at("index"),        json.at("points"),   json.at("master_points"),
            json.at("master_track"), json.at("clusters"), json.at("duration_us")};
}

Json fileJson(const CheckedFile& checked) {
    Json json;
    setPath(json, "file", checked.path);
    json["verdict"] = toString(checked.verdict);
    json["reason"] = checked.reason;
    json["size"] = checked.size;
    if (checked.mtimeUs) json["mtime_us"] = *checked.mtimeUs;
    if (!checked.containerMime.empty()) json["container_mime"] = checked.containerMime;
    json["tracks"] = Json::array();
    for (const TrackVerdict& track : checked.tracks) json["tracks"].push_back(trackJson(track));
    json["findings"] = findingsJson(checked.findings);
    if (const Remedy all = remedyOfAll(checked); !all.empty()) json["remedy"] = remedyJson(all);
    if (checked.shares) json["bytes"] = sharesJson(*checked.shares);
    if (checked.seeking) json["seeking"] = seekingJson(*checked.seeking);
    return json;
}

CheckedFile readFile(const Json& json) {
    CheckedFile checked;
    checked.path = pathIn(json, "file");
    checked.verdict = named(kVerdicts, json.at("verdict"));
    checked.reason = json.at("reason");
    checked.size = json.at("size");
    if (json.contains("mtime_us")) checked.mtimeUs = json["mtime_us"].get<int64_t>();
    checked.containerMime = json.value("container_mime", "");
    for (const Json& track : json.at("tracks")) checked.tracks.push_back(readTrack(track));
    checked.findings = readFindings(json.at("findings"));
    if (json.contains("bytes")) checked.shares = readShares(json["bytes"]);
    if (json.contains("seeking")) checked.seeking = readSeeking(json["seeking"]);
    return checked;
}

}  // namespace

std::string toJsonLine(const CheckedFile& checked) {
    Json json = newResult();
    json.update(fileJson(checked));
    return dump(json);
}

std::string toJson(const std::vector<CheckedFile>& files, Verdict worst, bool isComplete) {
    Json json = newResult();
    json["verdict"] = toString(worst);
    json["complete"] = isComplete;
    json["files"] = Json::array();
    for (const CheckedFile& file : files) json["files"].push_back(fileJson(file));
    return dump(json);
}

std::vector<CheckedFile> fromJsonResult(const std::string& text) {
    const Json json = Json::parse(text);
    std::vector<CheckedFile> files;
    if (!json.contains("files")) return {readFile(json)};
    for (const Json& file : json["files"]) files.push_back(readFile(file));
    return files;
}

CheckedFile fromJsonLine(const std::string& line) {
    try {
        return readFile(Json::parse(line));
    } catch (const std::exception& error) {
        throw std::runtime_error(std::string("an examination gave no result: ") + error.what());
    }
}

}  // namespace mkvx
