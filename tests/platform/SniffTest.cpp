#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include <host/ExtractorPlugin.h>
#include <host/MemorySource.h>
#include <media/stagefright/DataSource.h>
#include <media/stagefright/foundation/AMessage.h>

namespace android {
namespace {

struct Answer {
    bool recognised = false;
    float confidence = 0;
};

// Three sniffers whose answers each test sets; the others of this process see nothing they know in an empty
// source.
Answer gAnswers[3];

template <int N>
bool SnifferNumber(const sp<DataSource>& /*source*/, String8* mime, float* confidence, sp<AMessage>* meta) {
    mime->setTo(("type/" + std::to_string(N)).c_str());
    *confidence = gAnswers[N].confidence;
    if (N == 2) {
        *meta = new AMessage;
        (*meta)->setInt32("number", N);
    }
    return gAnswers[N].recognised;
}

TEST(Sniff, SurestSnifferWins) {
    host::RegisterSniffer(SnifferNumber<0>);
    host::RegisterSniffer(SnifferNumber<1>);
    host::RegisterSniffer(SnifferNumber<2>);
    struct Case {
        const char* why;
        Answer answers[3];
        const char* mime;
        float confidence;
        bool hasMeta;
    };
    const Case cases[] = {
        {"nobody knows it", {{false, 0.9f}, {false, 0.5f}, {false, 0.1f}}, "", 0, false},
        {"a no counts for nothing, however sure",
         {{false, 0.9f}, {true, 0.1f}, {false, 1}},
         "type/1",
         0.1f,
         false},
        {"the highest, wherever it stands",
         {{true, 0.5f}, {true, 0.91f}, {true, 0.4f}},
         "type/1",
         0.91f,
         false},
        {"the first of equals", {{true, 0.5f}, {true, 0.5f}, {true, 0.5f}}, "type/0", 0.5f, false},
        {"with its message", {{true, 0.1f}, {true, 0.2f}, {true, 0.3f}}, "type/2", 0.3f, true},
        {"no confidence, no answer", {{true, 0}, {true, 0}, {true, 0}}, "", 0, false},
    };
    sp<DataSource> source = new host::MemorySource(std::vector<uint8_t>());
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        std::copy(std::begin(c.answers), std::end(c.answers), gAnswers);
        String8 mime("left over");
        float confidence = 7;
        sp<AMessage> meta = new AMessage;
        EXPECT_EQ(source->sniff(&mime, &confidence, &meta), c.confidence > 0);
        EXPECT_STREQ(mime.string(), c.mime);
        EXPECT_EQ(confidence, c.confidence);
        EXPECT_EQ(meta != NULL, c.hasMeta);
    }
    std::fill(std::begin(gAnswers), std::end(gAnswers), Answer());
}

// What a source that overrides nothing says.
class BareSource : public DataSource {
  public:
    status_t initCheck() const override { return OK; }
    ssize_t readAt(off64_t, void*, size_t) override { return ERROR_IO; }
};

TEST(DataSource, Defaults) {
    sp<DataSource> source = new BareSource;
    off64_t size = 5;
    uint16_t number = 5;
    EXPECT_EQ(source->getSize(&size), ERROR_UNSUPPORTED);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(source->flags(), 0u);
    EXPECT_EQ(source->reconnectAtOffset(0), ERROR_UNSUPPORTED);
    EXPECT_STREQ(source->getMIMEType().string(), "application/octet-stream");
    EXPECT_EQ(source->DrmInitialization(), nullptr);
    EXPECT_FALSE(source->getUInt16(0, &number)) << "a failed read is no number";
    EXPECT_EQ(number, 0u);
}

}  // namespace
}  // namespace android
