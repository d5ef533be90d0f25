#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <host/ExtractorPlugin.h>
#include <host/MemorySource.h>
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/MetaData.h>

namespace android {
namespace {

using host::ExtractorPlugin;

sp<DataSource> SourceOf(const std::string& text) {
    return new host::MemorySource(std::vector<uint8_t>(text.begin(), text.end()));
}

TEST(ExtractorPlugin, ResolvesTheFourFunctions) {
    ExtractorPlugin plugin;
    std::string error;
    ASSERT_TRUE(ExtractorPlugin::Load(TEST_PLUGIN, &plugin, &error)) << error;
    String8 mime;
    SortedVector<String8> extensions;
    EXPECT_TRUE(plugin.getMimeString(&mime));
    EXPECT_STREQ(mime.string(), "video/x-test");
    EXPECT_TRUE(plugin.getSupportExtension(extensions));
    ASSERT_EQ(extensions.size(), 1u);
    sp<MediaExtractor> extractor = plugin.open(SourceOf(""), NULL);
    ASSERT_NE(extractor, nullptr);
    EXPECT_EQ(extractor->getStrongCount(), 1);
    EXPECT_FALSE(extractor->getDrmFlag());
    EXPECT_EQ(extractor->flags(), 15u);
    EXPECT_FALSE(extractor->getMetaData()->hasData(kKeyMIMEType));
}

TEST(ExtractorPlugin, SaysWhatIsMissing) {
    struct Case {
        const char* path;
        const char* message;
    };
    const Case cases[] = {
        {TEST_PLUGIN_INCOMPLETE, "has no function android::createInstance"},
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

// Surest of all, but no plug-in.
bool SniffSure(const sp<DataSource>& source, String8* mime, float* confidence, sp<AMessage>* /*meta*/) {
    uint32_t head;
    if (!source->getUInt32(5, &head) || head != 'sure') return false;
    mime->setTo("video/x-test");
    *confidence = 1.0f;
    return true;
}

TEST(ExtractorPlugin, CreateTakesTheWinner) {
    std::string error;
    ASSERT_TRUE(host::RegisterPlugin(TEST_PLUGIN, &error)) << error;
    ASSERT_TRUE(host::RegisterPlugin(TEST_PLUGIN, &error)) << error;
    host::RegisterSniffer(SniffSure);

    struct Case {
        const char* why;
        const char* content;
        const char* mime;
        bool made;
        size_t tracks;  // 3 when the sniffer's message came along
    };
    const Case cases[] = {
        {"sniffed", "TESTZ", nullptr, true, 3},
        {"not recognised", "other", nullptr, false, 0},
        {"too short to tell", "TEST", nullptr, false, 0},
        {"named, in any case; not sniffed", "other", "VIDEO/X-Test", true, 0},
        {"named, but nobody's", "TESTZ", "video/x-test-variant", false, 0},
        {"won by a sniffer without a plug-in", "TESTZsure", nullptr, false, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        sp<MediaExtractor> extractor = MediaExtractor::Create(SourceOf(c.content), c.mime);
        ASSERT_EQ(extractor != NULL, c.made);
        if (!c.made) continue;
        EXPECT_EQ(extractor->countTracks(), c.tracks);
        EXPECT_FALSE(extractor->getDrmFlag()) << "taken off by whoever creates";
    }
}

}  // namespace
}  // namespace android
