#include <gtest/gtest.h>

#include <string>

#include <host/ExtractorPlugin.h>

namespace android {
namespace {

using host::ExtractorPlugin;

TEST(ExtractorPlugin, SaysWhatIsMissing) {
    struct Case {
        const char* path;
        const char* message;
    };
    const Case cases[] = {
        {TEST_PLUGIN, "has no function android::createInstance"},
        {"/nowhere/plugin.so", "/nowhere/plugin.so"},
        {"libutils.so", "./libutils.so"},  // not searched for along the loader's path
    };
    for (const Case& c : cases) {
        ExtractorPlugin plugin;
        std::string error;
        EXPECT_FALSE(ExtractorPlugin::Load(c.path, &plugin, &error));
        EXPECT_NE(error.find(c.message), std::string::npos) << error;
        EXPECT_EQ(plugin.createInstance, nullptr);
        EXPECT_FALSE(host::RegisterPlugin(c.path, &error));
    }
}

}  // namespace
}  // namespace android
