#include <gtest/gtest.h>

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <vector>

#include <host/MappedSource.h>
#include <host/MemorySource.h>
#include <host/PreadSource.h>
#include <media/stagefright/MediaErrors.h>

namespace android {
namespace {

// A folder that is gone, with its files, at the end of the test.
class Sources : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = ::testing::TempDir() + "sourcesXXXXXX";
        ASSERT_NE(mkdtemp(&pattern[0]), nullptr);
        mFolder = pattern;
    }
    void TearDown() override {
        for (const std::string& file : mFiles) unlink(file.c_str());
        rmdir(mFolder.c_str());
    }

    std::string PathFor(const std::string& name) {
        mFiles.push_back(mFolder + "/" + name);
        return mFiles.back();
    }

    std::string FileWith(const std::string& name, const std::string& content) {
        const std::string path = PathFor(name);
        const int fd = open(path.c_str(), O_CREAT | O_WRONLY, 0600);
        EXPECT_EQ(write(fd, content.data(), content.size()), static_cast<ssize_t>(content.size()));
        close(fd);
        return path;
    }

    std::string mFolder;
    std::vector<std::string> mFiles;
};

struct Kind {
    const char* name;
    std::function<sp<DataSource>(const std::string& path)> open;
};

const Kind kKinds[] = {
    {"PreadSource", [](const std::string& path) { return new host::PreadSource(path.c_str()); }},
    {"PreadSource on a descriptor",
     [](const std::string& path) { return new host::PreadSource(open(path.c_str(), O_RDONLY)); }},
    {"MappedSource", [](const std::string& path) { return new host::MappedSource(path.c_str()); }},
    {"MemorySource", [](const std::string&) { return new host::MemorySource("0123456789", 10); }},
};

TEST_F(Sources, ReadsMeetTheEnd) {
    struct Read {
        off64_t offset;
        size_t size;
        const char* expected;
    };
    const Read reads[] = {
        {0, 10, "0123456789"}, {3, 4, "3456"}, {8, 4, "89"},       {10, 1, ""},
        {11, 5, ""},           {5, 0, ""},     {INT64_MAX, 9, ""}, {0, 64, "0123456789"},
    };
    const std::string path = FileWith("digits", "0123456789");
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        sp<DataSource> source = kind.open(path);
        ASSERT_EQ(source->initCheck(), OK);
        off64_t size = -1;
        EXPECT_EQ(source->getSize(&size), OK);
        EXPECT_EQ(size, 10);
        EXPECT_EQ(source->flags(), 0u);
        for (const Read& read : reads) {
            char bytes[64];
            const ssize_t count = source->readAt(read.offset, bytes, read.size);
            ASSERT_GE(count, 0) << read.offset;
            EXPECT_EQ(std::string(bytes, static_cast<size_t>(count)), read.expected) << read.offset;
        }
        char byte;
        EXPECT_EQ(source->readAt(-1, &byte, 1), BAD_VALUE);
    }
}

TEST_F(Sources, SayWhyTheyCannotBeUsed) {
    const std::string fifo = PathFor("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const int keepOpen = open(fifo.c_str(), O_RDWR);  // or opening it to read would wait
    struct Case {
        std::string path;
        status_t status;
    };
    const Case cases[] = {{mFolder + "/missing", -ENOENT}, {mFolder, -EISDIR}, {fifo, -ESPIPE}};
    for (const Case& c : cases) {
        const sp<DataSource> sources[] = {new host::PreadSource(c.path.c_str()),
                                          new host::MappedSource(c.path.c_str())};
        for (const sp<DataSource>& source : sources) {
            char byte;
            off64_t size = 7;
            EXPECT_EQ(source->initCheck(), c.status) << c.path;
            EXPECT_EQ(source->readAt(0, &byte, 1), c.status);
            EXPECT_EQ(source->getSize(&size), c.status);
            EXPECT_EQ(size, 0);
        }
    }
    close(keepOpen);
}

TEST_F(Sources, EmptyFileIsUsableAndEmpty) {
    const std::string path = FileWith("empty", "");
    const sp<DataSource> sources[] = {new host::PreadSource(path.c_str()),
                                      new host::MappedSource(path.c_str()),
                                      new host::MemorySource(nullptr, 0)};
    for (const sp<DataSource>& source : sources) {
        char byte;
        off64_t size = 7;
        EXPECT_EQ(source->initCheck(), OK);
        EXPECT_EQ(source->readAt(0, &byte, 1), 0);
        EXPECT_EQ(source->getSize(&size), OK);
        EXPECT_EQ(size, 0);
    }
}

TEST_F(Sources, ReachPastFourGigabytes) {
    const off64_t far = (off64_t{5} << 30) + 3;
    const std::string path = FileWith("large", "start");
    const int fd = open(path.c_str(), O_WRONLY);
    ASSERT_EQ(pwrite64(fd, "end", 3, far), 3);
    close(fd);
    for (const Kind& kind : kKinds) {
        if (std::string(kind.name) == "MemorySource") continue;
        SCOPED_TRACE(kind.name);
        sp<DataSource> source = kind.open(path);
        off64_t size = 0;
        char bytes[8] = {};
        if (sizeof(void*) == 4 && std::string(kind.name) == "MappedSource") {
            EXPECT_EQ(source->initCheck(), -ENOMEM);  // no address space for it
            continue;
        }
        EXPECT_EQ(source->getSize(&size), OK);
        EXPECT_EQ(size, far + 3);
        EXPECT_EQ(source->readAt(far, bytes, sizeof(bytes)), 3);
        EXPECT_STREQ(bytes, "end");
    }
}

}  // namespace
}  // namespace android
