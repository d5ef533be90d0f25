#include "codecs/Json.h"

namespace mkvx {
namespace {

// The members in their order, for both directions.
template <typename Facts, typename Each>
void eachMember(Facts& facts, Each each) {
    each("profile", facts.profile);
    each("level", facts.level);
    each("bit_depth", facts.bitDepth);
    each("chroma", facts.chroma);
    each("width", facts.width);
    each("height", facts.height);
    each("frame_rate", facts.frameRate);
    each("sample_rate", facts.sampleRate);
    each("channels", facts.channels);
}

}  // namespace

Json toJson(const StreamFacts& facts) {
    Json json = Json::object();
    eachMember(facts, [&json](const char* name, const auto& value) {
        if (value != std::decay_t<decltype(value)>()) json[name] = value;
    });
    return json;
}

StreamFacts streamFactsOf(const Json& json) {
    StreamFacts facts;
    eachMember(facts, [&json](const char* name, auto& value) {
        if (json.contains(name)) json.at(name).get_to(value);
    });
    return facts;
}

}  // namespace mkvx
