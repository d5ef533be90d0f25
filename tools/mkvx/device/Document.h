// Chapters and attachments, as the plug-in's document model holds them once it has opened a file.
//
// Texts are the bytes of the file to their first zero byte, and need not be valid UTF-8. Times are
// microseconds, cut from the file's nanoseconds.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace mkvx {

struct ChapterTitle {
    std::string text, language, country;  // empty where the file says nothing
};

struct Chapter {
    int64_t startUs = 0;
    std::optional<int64_t> endUs;
    bool isHidden = false, isEnabled = true;
    std::vector<ChapterTitle> titles;
    std::vector<Chapter> nested;  // 64 levels at most
};

struct Chapters {
    bool isReached = true;  // false: the plug-in's model is without them, for nothing leads it there
    std::vector<std::vector<Chapter>> editions;
};

struct Attachment {
    std::string name, mime, description;
    uint64_t uid = 0;
    uint64_t offset = 0;  // of the data in the file; 0 where there is none
    uint64_t size = 0;
};

struct Attachments {
    bool isReached = true;  // as with Chapters
    std::vector<Attachment> files;
};

// A file as opening reads it. What the wanted element is found by is what opening goes by; where that leads
// to none, the Segment's children are looked through, which opening does not do. Silent; one thread.
class Document {
  public:
    explicit Document(const android::sp<android::DataSource>& source);
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    // False: the plug-in reads no document from it, and there is nothing in this one.
    bool isReadable() const;
    Chapters chapters();
    Attachments attachments();

  private:
    struct State;
    std::unique_ptr<State> mState;
};

}  // namespace mkvx
