// What the commands of this room print: items of the element tree, explanations, chapters and attachments.
//
// Texts of the file are its bytes and need not be valid UTF-8. Plain values: copy freely.
#pragma once
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "base/Format.h"
#include "base/Listing.h"
#include "device/Document.h"
#include "device/Element.h"

namespace mkvx {

// ---- the tree

// Items that were left out of a listing: how many of which name, in the order in which they were first met.
struct LeftOut {
    uint64_t offset = 0, end = 0;
    std::vector<std::pair<std::string, uint64_t>> counts;
};

// Elements have their values, and what these mean.
struct TreeItem {
    unsigned depth = 0;  // 0 for the file's own children
    std::variant<Element, Gap, LeftOut> what;
    bool isAsked = false;  // holds the byte that was asked for
};

// kTable (text), kJson (one object) or kJsonLines. `length` is the file's, where it is known.
std::unique_ptr<Listing<TreeItem>> newTreeListing(Format format, const std::string& file,
                                                  std::optional<uint64_t> length, std::FILE* out);
std::unique_ptr<Listing<TreeItem>> newTextTree(std::optional<uint64_t> length, std::FILE* out);
std::string openTreeJson(const std::string& file, std::optional<uint64_t> length);
void printJson(const TreeItem& item, std::FILE* out);

// ---- explanations

// Where an element stands in a file.
struct Place {
    static constexpr size_t kShownBytes = 64;

    std::vector<TreeItem> way;   // from the top to what holds the byte, with values
    std::vector<uint8_t> bytes;  // the first of them: an element's header and the start of its data
};

struct Occurrences {
    static constexpr size_t kShown = 5;
    std::vector<Element> first;  // with values
    uint64_t count = 0;
};

struct Explanation {
    uint32_t id = 0;                    // 0 for bytes that belong to no element
    const ElementInfo* info = nullptr;  // null for an ID that is in no table
    std::optional<std::string> file;
    std::optional<uint64_t> offset;          // asked for: a place in `file`
    std::optional<Place> place;              // with `offset`
    std::optional<Occurrences> occurrences;  // with `file` and without `offset`
};

void printText(const Explanation& explanation, std::FILE* out);
void printJson(const Explanation& explanation, std::FILE* out);

// All elements that the table has, in its order.
struct ElementList {};

void printText(const ElementList& all, std::FILE* out);
void printJson(const ElementList& all, std::FILE* out);

// ---- chapters and attachments

struct ChaptersReport {
    std::string file;
    Chapters chapters;
};

void printText(const ChaptersReport& report, std::FILE* out);
void printJson(const ChaptersReport& report, std::FILE* out);

// What became of an attachment that was to be written.
struct SavedAttachment {
    std::string savedAs;  // file name, once it was written
    std::string problem;  // why it could not be
};

struct AttachmentsReport {
    std::string file;
    Attachments attachments;
    std::vector<SavedAttachment> saved;  // one for each, where they were to be written
};

void printText(const AttachmentsReport& report, std::FILE* out);
void printJson(const AttachmentsReport& report, std::FILE* out);

}  // namespace mkvx
