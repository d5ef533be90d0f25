// Names for somebody who has mistyped one.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace mkvx {

// Those of `names` that `asked` may have meant, the likeliest first, five at most; letters' case does not
// count.
std::vector<std::string> similarTo(std::string_view asked, const std::vector<std::string>& names);

}  // namespace mkvx
