#include "base/Terminal.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <cstdlib>
#include <cstring>

#include "base/Text.h"

namespace mkvx {

bool wantsColour(std::FILE* out) {
    const char* none = std::getenv("NO_COLOR");
    if (none != nullptr && *none != '\0') return false;
    const char* terminal = std::getenv("TERM");
    const bool isPlain = terminal == nullptr || std::strcmp(terminal, "dumb") == 0;
    return !isPlain && ::isatty(::fileno(out)) != 0;
}

size_t terminalWidth(std::FILE* out) {
    winsize size{};
    if (::isatty(::fileno(out)) == 0 || ::ioctl(::fileno(out), TIOCGWINSZ, &size) != 0) return 0;
    return size.ws_col;
}

void printFitted(std::FILE* out, size_t indent, const std::string& text) {
    constexpr size_t kFurther = 4;
    fmt::print(out, "{}\n", wrapped(std::string(indent, ' ') + text, terminalWidth(out), indent + kFurther));
}

void tell(const std::string& sentence) {
    printFitted(stderr, 0, "mkvx: " + printable(sentence));
}

std::string Paint::wrap(const char* code, const std::string& text) const {
    if (!mIsOn || text.empty()) return text;
    return std::string("\033[") + code + "m" + text + "\033[0m";
}

}  // namespace mkvx
