// A stream's facts in JSON: members that are not known are absent.
#pragma once
#include "base/Json.h"
#include "codecs/StreamFacts.h"

namespace mkvx {

Json toJson(const StreamFacts& facts);
// What toJson() wrote. Throws what the JSON library throws.
StreamFacts streamFactsOf(const Json& json);

}  // namespace mkvx
