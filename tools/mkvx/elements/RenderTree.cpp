#include "elements/RenderTree.h"

#include <fmt/format.h>
#include <algorithm>

#include "base/Json.h"
#include "base/Text.h"
#include "elements/RenderElement.h"

namespace mkvx {
namespace {

// ---- text

std::string leftOutText(const LeftOut& sum) {
    std::string text;
    for (const auto& [name, count] : sum.counts)
        text += fmt::format("{}{:L} more {}", text.empty() ? "... " : ", ", count, name);
    return text;
}

class TextTree : public TreeWriter {
  public:
    TextTree(std::optional<uint64_t> length, std::FILE* out)
        : mOut(out), mWidth(std::max<size_t>(6, length ? std::to_string(*length).size() : 10)) {
        fmt::print(mOut, "{:>{}}  HEADER  {:>{}}  ELEMENT\n", "OFFSET", mWidth, "SIZE", mWidth);
    }

    void write(const TreeItem& item) override {
        mDepth = item.depth;
        std::visit([this](const auto& what) { print(what); }, item.what);
        if (item.isAsked) fmt::print(mOut, "  <--");
        fmt::print(mOut, "\n");
    }

  private:
    void print(const Element& element) {
        const std::string size = element.hasUnknownSize ? "unknown" : std::to_string(element.size);
        row(element.offset, std::to_string(element.dataOffset - element.offset), size);
        fmt::print(mOut, "{}", nameOf(element));
        const std::string value = valueText(element);
        if (!value.empty()) fmt::print(mOut, ": {}", value);
        for (const std::string& note : element.notes) fmt::print(mOut, "  ! {}", note);
    }
    void print(const Gap& gap) {
        row(gap.offset, "", std::to_string(gap.end - gap.offset));
        fmt::print(mOut, "! no element can be read here{}",
                   gap.isResynchronised ? ": skipped" : ", and the reader looks no further");
    }
    void print(const LeftOut& sum) {
        row(sum.offset, "", std::to_string(sum.end - sum.offset));
        fmt::print(mOut, "{}", leftOutText(sum));
    }
    void row(uint64_t offset, const std::string& header, const std::string& size) {
        fmt::print(mOut, "{:>{}}  {:>6}  {:>{}}  {:{}}", offset, mWidth, header, size, mWidth, "",
                   2 * mDepth);
    }

    std::FILE* mOut;
    size_t mWidth;
    unsigned mDepth = 0;
};

// ---- JSON

Json contentJson(const Element& element) {
    return elementJson(element);
}

Json contentJson(const Gap& gap) {
    return {{"offset", gap.offset}, {"end", gap.end}, {"gap", gap.isResynchronised ? "skipped" : "rest"}};
}

Json contentJson(const LeftOut& sum) {
    Json counts = Json::object();
    for (const auto& [name, count] : sum.counts) counts[name] = count;
    return {{"offset", sum.offset}, {"end", sum.end}, {"left_out", counts}};
}

Json itemJson(const TreeItem& item) {
    Json object;
    object["depth"] = item.depth;
    object.update(std::visit([](const auto& what) { return contentJson(what); }, item.what));
    if (item.isAsked) object["asked"] = true;
    return object;
}

class JsonLinesTree : public TreeWriter {
  public:
    explicit JsonLinesTree(std::FILE* out) : mOut(out) {}
    void write(const TreeItem& item) override { fmt::print(mOut, "{}\n", dump(itemJson(item))); }

  private:
    std::FILE* mOut;
};

// One object, but written item by item: a listing may be longer than memory.
class JsonTree : public TreeWriter {
  public:
    JsonTree(const std::string& file, std::optional<uint64_t> length, std::FILE* out) : mOut(out) {
        Json head = newResult();
        head["file"] = file;
        if (length) head["size"] = *length;
        fmt::print(mOut, "{}", openResult(head, "items"));
    }
    void write(const TreeItem& item) override {
        fmt::print(mOut, "{}{}", mIsFirst ? "\n" : ",\n", dump(itemJson(item)));
        mIsFirst = false;
    }
    void finish() override { fmt::print(mOut, "\n]}}\n"); }

  private:
    std::FILE* mOut;
    bool mIsFirst = true;
};

}  // namespace

std::unique_ptr<TreeWriter> makeTreeWriter(Format format, const std::string& file,
                                           std::optional<uint64_t> length, std::FILE* out) {
    if (format == Format::kJsonLines) return std::make_unique<JsonLinesTree>(out);
    if (format == Format::kJson) return std::make_unique<JsonTree>(file, length, out);
    return std::make_unique<TextTree>(length, out);
}

}  // namespace mkvx
