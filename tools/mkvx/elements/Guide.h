// What the elements of the table mean, and what the plug-in does with each.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "device/ElementIds.h"

namespace mkvx {

enum class ElementUse {
    kUsed,     // something that the framework receives depends on it
    kKept,     // read into the model, where nothing looks at it
    kIgnored,  // passed over
};

struct ElementGuide {
    const char* name;  // as the element table has it
    ElementUse use;
    const char* meaning;  // sentences
    const char* plugin;   // what the plug-in does with it, beyond `use`; may be empty
};

// "used", "kept" or "ignored".
const char* toString(ElementUse use);

const ElementGuide& guideTo(const ElementInfo& info);

// The element of that name, in any case; older and newer names of the same element count. Null when there is
// none.
const ElementInfo* findByName(std::string_view name);

// Names of the table that were perhaps meant, the likeliest first, at most five.
std::vector<std::string> similarNames(std::string_view name);

}  // namespace mkvx
