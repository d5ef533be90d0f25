// Subtitles as text files.
#include <fmt/format.h>
#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "extract/Writer.h"

namespace mkvx {
namespace {

struct Event {
    int64_t startUs = 0, endUs = 0;
    std::string text;
};

// Holds each event back until the next is known: one without an end of its own lasts until then.
class TextWriter : public ExtractWriter {
  public:
    using ExtractWriter::ExtractWriter;

    void write(const ExtractUnit& unit) override {
        putHeldBack(std::max<int64_t>(0, unit.timeUs));
        const auto* text = reinterpret_cast<const char*>(unit.data);
        mHeldBack = Event{std::max<int64_t>(0, unit.timeUs), unit.endUs, std::string(text, unit.size)};
    }
    void finish() override {
        constexpr int64_t kLastLastsUs = 2000000;
        if (mHeldBack) putHeldBack(mHeldBack->startUs + kLastLastsUs);
    }

  protected:
    virtual void put(const Event& event) = 0;

  private:
    void putHeldBack(int64_t nextUs) {
        if (!mHeldBack) return;
        Event& event = *mHeldBack;
        if (event.endUs <= event.startUs) event.endUs = std::max(nextUs, event.startUs);
        put(event);
        mHeldBack.reset();
    }

    std::optional<Event> mHeldBack;
};

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        while (!line.empty() && (line.back() == '\r' || line.back() == '\0')) line.remove_suffix(1);
        if (!line.empty()) lines.push_back(line);  // an empty line would end an SRT event
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

class SrtWriter : public TextWriter {
  public:
    using TextWriter::TextWriter;
    std::string form() const override { return "SubRip text"; }

  protected:
    void put(const Event& event) override {
        std::string text =
            fmt::format("{}\n{} --> {}\n", ++mNumber, clock(event.startUs), clock(event.endUs));
        for (const std::string_view line : linesOf(event.text)) text.append(line).append("\n");
        mOut.write(text + "\n");
    }

  private:
    static std::string clock(int64_t us) {
        const int64_t ms = us / 1000;
        return fmt::format("{:02}:{:02}:{:02},{:03}", ms / 3600000, ms / 60000 % 60, ms / 1000 % 60,
                           ms % 1000);
    }

    uint64_t mNumber = 0;
};

// An event in Matroska has no times, begins with its number in reading order, and has its layer next.
class AssWriter : public TextWriter {
  public:
    AssWriter(const ExtractTrack& track, ExtractFile& out)
        : TextWriter(out), mHeader(track.codecPrivate.begin(), track.codecPrivate.end()) {
        const size_t end = mHeader.find('\0');
        if (end != std::string::npos) mHeader.resize(end);
        mIsOld = mHeader.find("[V4+ Styles]") == std::string::npos && !mHeader.empty();
    }

    std::string form() const override { return mIsOld ? "SSA text" : "ASS text"; }
    void begin() override {
        while (!mHeader.empty() && (mHeader.back() == '\n' || mHeader.back() == '\r')) mHeader.pop_back();
        if (!mHeader.empty()) mHeader += "\n";
        if (!endsInEvents()) mHeader += eventsHead();
        mOut.write(mHeader);
    }

  protected:
    void put(const Event& event) override {
        std::string_view rest = event.text;
        const std::optional<Fields> fields = takeFields(rest);
        if (!fields) return;  // nothing that such a file could show
        std::string text = fmt::format("Dialogue: {}{},{},{}", mIsOld ? "Marked=" : "", (*fields)[1],
                                       clock(event.startUs), clock(event.endUs));
        for (size_t i = 2; i < fields->size(); ++i) text.append(",").append((*fields)[i]);
        mOut.write(text + "," + joined(linesOf(rest)) + "\n");
    }

  private:
    using Fields = std::array<std::string_view, 8>;

    // What stands in front of an event's text, which is left in `rest`.
    static std::optional<Fields> takeFields(std::string_view& rest) {
        Fields fields;
        for (std::string_view& field : fields) {
            const size_t comma = rest.find(',');
            if (comma == std::string_view::npos) return std::nullopt;
            field = rest.substr(0, comma);
            rest.remove_prefix(comma + 1);
        }
        return fields;
    }
    static std::string joined(const std::vector<std::string_view>& lines) {
        return fmt::format("{}", fmt::join(lines, "\\N"));
    }
    bool endsInEvents() const {
        const size_t section = mHeader.rfind("\n[");
        return mHeader.compare(section == std::string::npos ? 0 : section + 1, 8, "[Events]") == 0 &&
               mHeader.find("Format:", section == std::string::npos ? 0 : section) != std::string::npos;
    }
    std::string eventsHead() const {
        return fmt::format(
            "\n[Events]\nFormat: {}, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n",
            mIsOld ? "Marked" : "Layer");
    }
    static std::string clock(int64_t us) {
        const int64_t cs = us / 10000;
        return fmt::format("{}:{:02}:{:02}.{:02}", cs / 360000, cs / 6000 % 60, cs / 100 % 60, cs % 100);
    }

    std::string mHeader;
    bool mIsOld = false;
};

}  // namespace

ExtractWriterPtr makeSrtWriter(ExtractFile& out) {
    return std::make_unique<SrtWriter>(out);
}

ExtractWriterPtr makeAssWriter(const ExtractTrack& track, ExtractFile& out) {
    return std::make_unique<AssWriter>(track, out);
}

}  // namespace mkvx
