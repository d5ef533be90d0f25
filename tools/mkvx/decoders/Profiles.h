// Which profiles, levels and sample formats decoders take: what a device's codec list does not hold.
#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace mkvx {

struct TakenProfile {
    std::string name;   // as StreamFacts has it
    std::string level;  // the highest; empty: any
};

// Empty or 0: any.
struct TakenStreams {
    std::vector<TakenProfile> profiles;
    uint32_t bits = 0;                // the most
    std::vector<std::string> chroma;  // "4:2:0"
};

// By MIME type, or by the name of one decoder, which counts more.
using ProfileTable = std::map<std::string, TakenStreams>;

// What the software decoders of Android 5 take, by their published capabilities. Only MIME types that are in
// it have a software decoder there.
const ProfileTable& eraProfiles();

// A file of docs/schemas/profiles.schema.json. Its entries take the place of those of the same name in the
// table above. Throws FileFailure.
ProfileTable readProfiles(const std::string& path);

}  // namespace mkvx
