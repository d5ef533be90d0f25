// What the program knows about the terminal it may be talking to.
#pragma once
#include <cstddef>
#include <cstdio>
#include <string>

namespace mkvx {

// Colours are for a terminal that has them, and for nobody who has set NO_COLOR (to anything but nothing).
bool wantsColour(std::FILE* out);

// Columns of the terminal that `out` is; 0 where it is none, or does not tell.
size_t terminalWidth(std::FILE* out);

// The text behind so many spaces, and a line feed. On a terminal, what does not fit its width goes on below,
// indented further.
void printFitted(std::FILE* out, size_t indent, const std::string& text);

// One sentence on standard error, behind the program's name. Names of files in it may be anything: what would
// steer a terminal is replaced.
void tell(const std::string& sentence);

// Puts colours around texts, or leaves them alone where they are not wanted.
class Paint {
  public:
    explicit Paint(std::FILE* out) : mIsOn(wantsColour(out)) {}

    std::string good(const std::string& text) const { return wrap("32", text); }
    std::string odd(const std::string& text) const { return wrap("33", text); }
    std::string bad(const std::string& text) const { return wrap("31", text); }
    std::string worst(const std::string& text) const { return wrap("1;31", text); }
    std::string strong(const std::string& text) const { return wrap("1", text); }
    std::string faint(const std::string& text) const { return wrap("2", text); }

  private:
    std::string wrap(const char* code, const std::string& text) const;

    bool mIsOn;
};

}  // namespace mkvx
