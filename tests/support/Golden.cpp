#include "support/Golden.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace testing_support {

void ExpectGolden(const std::string& name, const std::string& actual) {
    const std::string path = std::string(TESTS_DIR) + "/" + name + ".txt";
    if (std::getenv("UPDATE_GOLDEN") != nullptr) {
        std::ofstream(path) << actual;
        return;
    }
    std::ifstream file(path);
    ASSERT_TRUE(file) << "no golden file " << path;
    std::ostringstream expected;
    expected << file.rdbuf();
    EXPECT_EQ(expected.str(), actual) << "golden file " << path;
}

}  // namespace testing_support
