// Expected texts kept in tests/NAME.txt. With the environment variable UPDATE_GOLDEN set,
// the files are rewritten from what the program does; look at the difference before committing it.
#pragma once

#include <string>

namespace testing_support {

void ExpectGolden(const std::string& name, const std::string& actual);

}  // namespace testing_support
