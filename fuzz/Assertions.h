// The extractor's intended assertions: caught, and compared with what the input calls for.
//
// The program that links this takes the assertion logger's place for the extractor's own assertions; those of
// the platform's libraries still end the process. What a caught assertion leaves half done is never freed, as
// nothing can unwind it; ScopedLeaks is for the one who expects that.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace fuzz {

struct Assertion {
    bool happened = false;
    std::string condition, tag, message;
};

// While it lives, leak checks overlook what is allocated.
class ScopedLeaks {
  public:
    explicit ScopedLeaks(bool isActive);
    ~ScopedLeaks();
    ScopedLeaks(const ScopedLeaks&) = delete;
    ScopedLeaks& operator=(const ScopedLeaks&) = delete;

  private:
    const bool mIsActive;
};

// Runs `body`, which must not hold a lock where it may assert.
Assertion Catch(const std::function<void()>& body);

// Ends the process unless `caught` is the assertion of this condition, or none for null.
void RequireAssertion(const Assertion& caught, const char* condition);

}  // namespace fuzz
