#include "decoders/CodecList.h"

#include <fmt/format.h>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <pugixml.hpp>

#include "base/Failure.h"
#include "base/Text.h"

namespace mkvx {
namespace {

constexpr size_t kMostBytes = 1 << 20;    // of a file; real ones have some tens of kilobytes
constexpr size_t kMostFiles = 64;         // read, those that are included twice counted twice
constexpr size_t kMostDecoders = 4096;    // of one MIME type each
constexpr size_t kMostNumberDigits = 15;  // within what a double holds exactly

std::string fileText(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) throw FileFailure(path, std::string("cannot be read: ") + std::strerror(errno));
    std::string text(kMostBytes + 1, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file.get()));
    if (std::ferror(file.get()) != 0) throw FileFailure(path, "cannot be read");
    if (text.size() > kMostBytes)
        throw FileFailure(path, fmt::format("has more than {} bytes, too many for a codec list", kMostBytes));
    return text;
}

// ---- values

bool isNumber(const std::string& text) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return !text.empty() && text.size() <= kMostNumberDigits &&
           std::all_of(text.begin(), text.end(), isDigit);
}

std::optional<PictureSize> parseSize(const std::string& text) {
    const size_t cross = text.find_first_of("xX*");
    if (cross == std::string::npos) return std::nullopt;
    const std::string width = text.substr(0, cross), height = text.substr(cross + 1);
    if (!isNumber(width) || !isNumber(height)) return std::nullopt;
    return PictureSize{std::stoull(width), std::stoull(height)};
}

// "1-60", or "8000" for that alone.
std::optional<LimitRange> parseRange(const std::string& text) {
    const size_t dash = text.find('-');
    const std::string least = text.substr(0, dash);
    const std::string most = dash == std::string::npos ? least : text.substr(dash + 1);
    if (!isNumber(least) || !isNumber(most)) return std::nullopt;
    const LimitRange range{std::stod(least), std::stod(most)};
    return range.least <= range.most ? std::optional(range) : std::nullopt;
}

// Reads the attributes of one <Limit>; says which of them is none.
class Limit {
  public:
    Limit(const std::string& file, const std::string& decoder, const pugi::xml_node& node)
        : mFile(file), mDecoder(decoder), mNode(node), mName(node.attribute("name").value()) {}

    void addTo(DecoderLimits& limits) const {
        if (mName == "size") {
            if (has("min")) limits.smallest = size("min");
            if (has("max")) limits.largest = size("max");
        } else if (mName == "alignment") {
            limits.alignment = positiveSize("value");
        } else if (mName == "block-size") {
            limits.blockSize = positiveSize("value");
        } else if (mName == "blocks" || mName == "block-count") {
            limits.blocks = range();
        } else if (mName == "blocks-per-second") {
            limits.blocksPerSecond = range();
        } else if (mName == "frame-rate") {
            limits.frameRate = range();
        } else if (mName == "bitrate") {
            limits.bitRate = range();
        } else if (mName == "channel-count") {
            limits.channels = range();
        } else if (mName == "sample-rate") {
            limits.sampleRates = ranges();
        }  // others are about encoders, instances or how fast a device was measured to be
    }

  private:
    bool has(const char* attribute) const { return !mNode.attribute(attribute).empty(); }
    std::string value(const char* attribute) const { return mNode.attribute(attribute).value(); }

    [[noreturn]] void fail(const std::string& what) const {
        throw FileFailure(
            mFile, fmt::format("the limit \"{}\" of {} {}", printable(mName), printable(mDecoder), what));
    }
    [[noreturn]] void failValue(const char* attribute, const char* shape) const {
        fail(fmt::format("has {}=\"{}\", which is not {}", attribute, printable(value(attribute)), shape));
    }

    PictureSize size(const char* attribute) const {
        if (const auto parsed = parseSize(value(attribute))) return *parsed;
        failValue(attribute, "a size such as 1920x1088");
    }
    PictureSize positiveSize(const char* attribute) const {
        const PictureSize parsed = size(attribute);
        if (parsed.width == 0 || parsed.height == 0) failValue(attribute, "a size above 0");
        return parsed;
    }
    LimitRange range() const {
        for (const char* attribute : {"range", "ranges"}) {
            if (!has(attribute)) continue;
            if (const auto parsed = parseRange(value(attribute))) return *parsed;
            failValue(attribute, "a range such as 1-60");
        }
        if (!has("max")) fail("has neither range nor max");
        const auto parsed = parseRange((has("min") ? value("min") : "0") + "-" + value("max"));
        if (!parsed) failValue("max", "a number from min on");
        return *parsed;
    }
    std::vector<LimitRange> ranges() const {
        if (!has("ranges")) return {range()};
        std::vector<LimitRange> all;
        const std::string text = value("ranges");
        for (size_t at = 0; at <= text.size();) {
            const size_t comma = std::min(text.find(',', at), text.size());
            const std::string one = text.substr(at, comma - at);
            const size_t first = one.find_first_not_of(' '), last = one.find_last_not_of(' ');
            const auto parsed =
                first == std::string::npos ? std::nullopt : parseRange(one.substr(first, last - first + 1));
            if (!parsed) failValue("ranges", "a list such as 8000,11025-48000");
            all.push_back(*parsed);
            at = comma + 1;
        }
        return all;
    }

    const std::string& mFile;
    const std::string& mDecoder;
    const pugi::xml_node& mNode;
    const std::string mName;
};

// ---- files

class ListReader {
  public:
    explicit ListReader(const std::string& path)
        : mFolder(path.substr(0, path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1)) {
        read(path);
        if (mList.decoders.empty())
            throw FileFailure(path, "names no decoder (a codec list has <Decoders> with <MediaCodec>)");
    }

    CodecList take() { return std::move(mList); }

  private:
    void read(const std::string& path) {
        if (std::find(mWay.begin(), mWay.end(), path) != mWay.end())
            throw FileFailure(path, fmt::format("includes itself: {}", wayTo(path)));
        if (mFiles++ == kMostFiles)
            throw FileFailure(path, fmt::format("is more than the {}th file that is included", kMostFiles));
        mWay.push_back(path);
        const std::string text = fileText(path);
        pugi::xml_document document;
        const pugi::xml_parse_result result =
            document.load_buffer(text.data(), text.size(), pugi::parse_default | pugi::parse_doctype);
        if (!result)
            throw FileFailure(path,
                              fmt::format("is no XML: {} at byte {}", result.description(), result.offset));
        readDocument(document);
        mWay.pop_back();
    }

    // Entities of its own are what a list has no use for and a hostile one has.
    void readDocument(const pugi::xml_document& document) {
        for (const pugi::xml_node& node : document)
            if (node.type() == pugi::node_doctype)
                throw FileFailure(mWay.back(), "declares a document type, which no codec list does");
        const pugi::xml_node root = document.document_element();
        const std::string name = root.name();
        if (name != "MediaCodecs" && name != "Included")
            throw FileFailure(
                mWay.back(),
                fmt::format("is no codec list: its root is <{}> and not <MediaCodecs>", printable(name)));
        for (const pugi::xml_node& child : root.children()) {
            if (std::strcmp(child.name(), "Include") == 0) include(child);
            if (std::strcmp(child.name(), "Decoders") == 0) readDecoders(child);
        }
    }

    void readDecoders(const pugi::xml_node& decoders) {
        for (const pugi::xml_node& child : decoders.children()) {
            if (std::strcmp(child.name(), "Include") == 0) include(child);
            if (std::strcmp(child.name(), "MediaCodec") == 0) readCodec(child);
        }
    }

    void include(const pugi::xml_node& node) {
        const std::string name = node.attribute("href").value();
        if (name.empty() || name.find('/') != std::string::npos || name[0] == '.')
            throw FileFailure(
                mWay.back(),
                fmt::format("includes \"{}\", which is no name of a file beside it", printable(name)));
        read(mFolder + name);
    }

    // Its MIME type is an attribute, or each of several a child with limits of its own.
    void readCodec(const pugi::xml_node& node) {
        const std::string name = node.attribute("name").value(), type = node.attribute("type").value();
        if (name.empty()) throw FileFailure(mWay.back(), "has a <MediaCodec> without a name");
        DecoderLimits common;
        addLimits(node, name, common);
        if (!type.empty()) add(name, type, common);
        for (const pugi::xml_node& child : node.children("Type")) {
            DecoderLimits limits = common;
            addLimits(child, name, limits);
            add(name, child.attribute("name").value(), limits);
        }
    }

    void addLimits(const pugi::xml_node& node, const std::string& decoder, DecoderLimits& limits) {
        for (const pugi::xml_node& child : node.children("Limit"))
            Limit(mWay.back(), decoder, child).addTo(limits);
    }

    void add(const std::string& name, const std::string& mime, const DecoderLimits& limits) {
        if (mList.decoders.size() == kMostDecoders)
            throw FileFailure(mWay.back(), fmt::format("names more than {} decoders", kMostDecoders));
        mList.decoders.push_back({name, mime, limits});
    }

    std::string wayTo(const std::string& path) const {
        std::string way;
        for (const std::string& file : mWay) way += file + " -> ";
        return printable(way + path);
    }

    const std::string mFolder;
    std::vector<std::string> mWay;  // from the list to the file that is being read
    size_t mFiles = 0;
    CodecList mList;
};

}  // namespace

CodecList readCodecList(const std::string& path) {
    return ListReader(path).take();
}

}  // namespace mkvx
