// The built plug-in, loaded as a framework loads it: by path and mangled names.
#include <utils/Errors.h>
#include <utils/SortedVector.h>
#include <utils/String8.h>
#include <media/stagefright/DataSource.h>
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/MediaSource.h>
#include <media/stagefright/MetaData.h>
#include <media/stagefright/foundation/AMessage.h>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "support/FaultySource.h"
#include "support/Listing.h"
#include "support/Golden.h"
#include "support/Oddities.h"

namespace testing_support {
namespace {

using namespace android;

struct LoadedPlugin {
    LoadedPlugin() : handle(dlopen(PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL)) {
        if (handle == nullptr) {
            ADD_FAILURE() << dlerror();
            return;
        }
        Resolve("_ZN7android13getMimeStringEPNS_7String8E", &getMimeString);
        Resolve("_ZN7android19getSupportExtensionERNS_12SortedVectorINS_7String8EEE", &getSupportExtension);
        Resolve("_ZN7android7SnifferERKNS_2spINS_10DataSourceEEEPNS_7String8EPfPNS0_INS_8AMessageEEE",
                &sniffer);
        Resolve("_ZN7android14createInstanceERKNS_2spINS_10DataSourceEEERKNS0_INS_8AMessageEEE",
                &createInstance);
    }

    template <typename Function>
    void Resolve(const char* symbol, Function** function) {
        *function = reinterpret_cast<Function*>(dlsym(handle, symbol));
        EXPECT_NE(nullptr, *function) << symbol;
    }

    sp<MediaExtractor> Create(const Bytes& file) const {
        return createInstance(sp<DataSource>(new FaultySource(file)), nullptr);
    }

    void* handle;  // stays loaded: objects of its classes may outlive any test
    bool (*getMimeString)(String8*) = nullptr;
    bool (*getSupportExtension)(SortedVector<String8>&) = nullptr;
    bool (*sniffer)(const sp<DataSource>&, String8*, float*, sp<AMessage>*) = nullptr;
    MediaExtractor* (*createInstance)(const sp<DataSource>&, const sp<AMessage>&) = nullptr;
};

const LoadedPlugin& Plugin() {
    static const LoadedPlugin* const plugin = new LoadedPlugin;
    return *plugin;
}

TEST(Plugin, WholeLife) {
    const Bytes file = OddityNamed("cues-in-front");
    String8 mime;
    ASSERT_TRUE(Plugin().getMimeString(&mime));
    EXPECT_STREQ("video/x-matroska_ext", mime.string());
    SortedVector<String8> extensions;
    extensions.add(String8(".mkv"));
    ASSERT_TRUE(Plugin().getSupportExtension(extensions));
    std::string names;
    for (size_t i = 0; i < extensions.size(); ++i) names += extensions[i].string();
    EXPECT_EQ(".mka.mks.mkv", names);

    String8 sniffed;
    float confidence = 0;
    sp<AMessage> meta;
    ASSERT_TRUE(Plugin().sniffer(sp<DataSource>(new FaultySource(file)), &sniffed, &confidence, &meta));
    EXPECT_STREQ(mime.string(), sniffed.string());
    EXPECT_FLOAT_EQ(0.91f, confidence);

    const sp<MediaExtractor> extractor = Plugin().Create(file);
    ASSERT_EQ(2u, extractor->countTracks());
    EXPECT_EQ("mime=video/x-matroska", Describe(extractor->getMetaData()));
    for (size_t i = 0; i < 2; ++i) {
        const sp<MediaSource> source = extractor->getTrack(i);
        EXPECT_EQ(extractor->getTrackMetaData(i, 0).get(), source->getFormat().get());
        ASSERT_EQ(OK, source->start(nullptr));
        status_t end = OK;
        EXPECT_EQ(15u, ReadAll(source, &end).size());
        EXPECT_EQ(ERROR_END_OF_STREAM, end);
        EXPECT_EQ(OK, source->stop());
    }
}

// See HostSymbols.cpp: this program has the same names with other values.
TEST(Plugin, ItsNamesBindToItself) {
    ASSERT_NE(nullptr, dlsym(RTLD_DEFAULT, "_ZN7android11GetMimeTypeEj")) << "this program exports nothing";
    String8 mime;
    Plugin().getMimeString(&mime);
    EXPECT_STREQ("video/x-matroska_ext", mime.string());
    const sp<MediaExtractor> extractor = Plugin().Create(OddityNamed("cues-in-front"));
    ASSERT_EQ(2u, extractor->countTracks());
    const char* trackMime = nullptr;
    ASSERT_TRUE(extractor->getTrackMetaData(0, 0)->findCString(kKeyMIMEType, &trackMime));
    EXPECT_STREQ("video/mpeg2", trackMime);

    const sp<MediaExtractor> avc = Plugin().Create(OddityNamed("avc-length-prefixes"));
    const sp<MediaSource> source = avc->getTrack(0);
    source->start(nullptr);
    Unit unit;
    ASSERT_EQ(OK, ReadUnit(source, &unit));
    EXPECT_EQ("000000016566670000000168", ToHex(unit.bytes));
}

std::vector<std::string> ExportedNames() {
    std::vector<std::string> names;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen("nm -DC --defined-only '" PLUGIN_PATH "'", "r"),
                                                     pclose);
    char line[4096];
    while (pipe != nullptr && std::fgets(line, sizeof line, pipe.get()) != nullptr) {
        std::string name(line);
        name.erase(name.find_last_not_of('\n') + 1);
        names.push_back(name.substr(std::min(name.size(), name.find(' ') + 3)));  // address, letter, name
    }
    return names;
}

TEST(Plugin, ExportsItsInterfaceAndNothingElse) {
#ifdef PLUGIN_IS_SANITIZED
    GTEST_SKIP() << "sanitizers export names of their own";
#endif
    const std::set<std::string> promised = {
        "android::getMimeString(android::String8*)",
        "android::getSupportExtension(android::SortedVector<android::String8>&)",
        "android::Sniffer(android::sp<android::DataSource> const&, android::String8*, float*, "
        "android::sp<android::AMessage>*)",
        "android::createInstance(android::sp<android::DataSource> const&, android::sp<android::AMessage> "
        "const&)",
        "android::GetMimeType(unsigned int)",
        "android::getCodecIDFromFourCC(unsigned int)",
        "android::isNeedExtra(char const*)",
        "android::AddESDSFromSpecificInfo(android::sp<android::MetaData> const&, void const*, unsigned int)",
        "android::PreProcessM4vExtraData(unsigned char*, unsigned int)",
        "android::CheckH264Type(unsigned char const*, int)",
        "android::H264DataPreprocess_AVC(unsigned char*, int)",
        "android::H264DataPreprocess_IEC(unsigned char*, int)",
        "android::copyDataYUV420(unsigned char*, unsigned char**, int, int, int)",
        "android::U16_AT(unsigned char const*)",
        "android::U32_AT(unsigned char const*)",
        "android::U64_AT(unsigned char const*)",
        "android::U16LE_AT(unsigned char const*)",
        "android::U32LE_AT(unsigned char const*)",
        "android::U64LE_AT(unsigned char const*)",
        "android::hton64(unsigned long long)",
        "android::PrintContent(char const*, void const*, int)",
        "android::hexdump(char*, unsigned char const*, unsigned int)",
        "android::dumpFrame(char const*, void const*, int)",
        "android::showBacktrace()",
        "vtable for android::MeasureTime",
    };
    std::set<std::string> found;
    for (const std::string& name : ExportedNames()) {
        if (name.rfind("android::MEDIA_MIMETYPE_", 0) == 0) continue;  // the next test's
        if (promised.count(name) != 0) {
            found.insert(name);
        } else {
            EXPECT_EQ(0u, name.find("android::MeasureTime::")) << "not promised: " << name;
        }
    }
    EXPECT_EQ(promised, found);
}

TEST(Plugin, MimeTexts) {
    std::string text;
    for (const std::string& name : ExportedNames()) {
        if (name.rfind("android::MEDIA_MIMETYPE_", 0) != 0) continue;
        const std::string constant = name.substr(9);
        const std::string symbol = "_ZN7android" + std::to_string(constant.size()) + constant + "E";
        const auto* value = static_cast<const char* const*>(dlsym(Plugin().handle, symbol.c_str()));
        text += constant + " = " + (value != nullptr ? *value : "?") + "\n";
    }
    ExpectGolden("matroska/golden/mime-texts", text);
}

}  // namespace
}  // namespace testing_support
