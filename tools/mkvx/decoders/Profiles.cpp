#include "decoders/Profiles.h"

#include <fmt/format.h>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "base/Failure.h"
#include "base/Json.h"
#include "base/Text.h"

namespace mkvx {
namespace {

constexpr size_t kMostBytes = 1 << 20;

TakenStreams streamsOf(const std::string& path, const std::string& name, const Json& json) {
    static const char* const kMembers[] = {"profiles", "bits", "chroma"};
    TakenStreams streams;
    for (const auto& [member, value] : json.items()) {
        const auto isMember = [&member_ = member](const char* known) { return member_ == known; };
        if (std::none_of(std::begin(kMembers), std::end(kMembers), isMember))
            throw FileFailure(path,
                              fmt::format("\"{}\" has a member \"{}\", which means nothing (profiles, bits "
                                          "and chroma do)",
                                          printable(name), printable(member)));
    }
    for (const Json& profile : json.value("profiles", Json::array()))
        streams.profiles.push_back({profile.at("name"), profile.value("level", "")});
    streams.bits = json.value("bits", 0u);
    streams.chroma = json.value("chroma", std::vector<std::string>());
    return streams;
}

std::string textOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text(kMostBytes + 1, '\0');
    if (!file) throw FileFailure(path, "cannot be read");
    file.read(text.data(), std::streamsize(text.size()));
    text.resize(size_t(file.gcount()));
    if (text.size() > kMostBytes) throw FileFailure(path, fmt::format("has more than {} bytes", kMostBytes));
    return text;
}

}  // namespace

const ProfileTable& eraProfiles() {
    static const ProfileTable table = {
        {"video/avc",
         {{{"Constrained Baseline", ""}, {"Baseline", ""}, {"Main", ""}, {"High", ""}}, 8, {"4:2:0"}}},
        {"video/hevc", {{{"Main", ""}, {"Main Still Picture", ""}}, 8, {"4:2:0"}}},
        {"video/x-vnd.on2.vp8", {{}, 8, {"4:2:0"}}},
        {"video/x-vnd.on2.vp9", {{{"0", ""}}, 8, {"4:2:0"}}},
        {"video/mp4v-es", {{{"Simple", ""}}, 8, {"4:2:0"}}},
        {"video/3gpp", {}},
        {"audio/mp4a-latm", {{{"LC", ""}, {"HE-AAC", ""}, {"HE-AACv2", ""}, {"LD", ""}, {"ELD", ""}}, 0, {}}},
        {"audio/mpeg", {{{"layer 3", ""}}, 0, {}}},
        {"audio/vorbis", {}},
        {"audio/flac", {{}, 24, {}}},
        {"audio/raw", {}},
        {"audio/g711-alaw", {}},
        {"audio/g711-mlaw", {}},
    };
    return table;
}

ProfileTable readProfiles(const std::string& path) {
    ProfileTable table = eraProfiles();
    try {
        const Json json = Json::parse(textOf(path));
        for (const auto& [name, streams] : json.at("decoders").items())
            table[name] = streamsOf(path, name, streams);
    } catch (const Json::exception& error) {
        throw FileFailure(path, std::string("is no table of profiles (docs/schemas/profiles.schema.json): ") +
                                    printable(error.what()));
    }
    return table;
}

}  // namespace mkvx
