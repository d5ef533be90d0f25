#include "base/Trial.h"

#include "base/Child.h"

namespace mkvx {

std::optional<std::string> whatStops(const std::function<void()>& work) {
    Child child([&](int) { work(); });
    while (child.takeOutput()) {  // ends with the child: it writes nothing
    }
    return child.finish();
}

}  // namespace mkvx
