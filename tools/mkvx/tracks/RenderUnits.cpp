#include <fmt/format.h>

#include "base/Json.h"
#include "base/Text.h"
#include "tracks/Render.h"

namespace mkvx {
namespace {

class TableWriter : public UnitWriter {
  public:
    explicit TableWriter(std::FILE* out) : mOut(out) {
        fmt::print(mOut, "{:>5} {:>13} {:>3} {:>9}  {:40}  {}\n", "INDEX", "TIME", "KEY", "SIZE", "SHA-1",
                   "END");
    }
    void write(const Unit& unit) override {
        fmt::print(mOut, "{:>5} {:>13} {:>3} {:>9}  {}", unit.track, clockTime(unit.timeUs),
                   unit.sync ? "key" : "", unit.size, unit.sha1);
        fmt::print(mOut, "{}\n", unit.endUs ? "  " + clockTime(*unit.endUs) : std::string());
    }

  private:
    std::FILE* mOut;
};

// Numbers and hex digits only: nothing needs escaping. There may be millions of them, so that a unit neither
// becomes a tree of values first nor carries the version of the format.
void printJson(const Unit& unit, std::FILE* out) {
    fmt::print(out, R"({{"track":{},"number":{},"time_us":{},"sync":{},"size":{},"sha1":"{}")", unit.track,
               unit.number, unit.timeUs, int(unit.sync), unit.size, unit.sha1);
    if (unit.endUs) fmt::print(out, R"(,"end_us":{})", *unit.endUs);
    fmt::print(out, "}}");
}

class JsonLinesWriter : public UnitWriter {
  public:
    explicit JsonLinesWriter(std::FILE* out) : mOut(out) {}
    void write(const Unit& unit) override {
        printJson(unit, mOut);
        fmt::print(mOut, "\n");
    }

  private:
    std::FILE* mOut;
};

class JsonWriter : public UnitWriter {
  public:
    JsonWriter(const std::string& file, std::FILE* out) : mOut(out) {
        Json head = newResult();
        head["file"] = file;
        fmt::print(mOut, "{}", openResult(head, "units"));
    }
    void write(const Unit& unit) override {
        fmt::print(mOut, "{}", mIsFirst ? "\n" : ",\n");
        printJson(unit, mOut);
        mIsFirst = false;
    }
    void finish() override { fmt::print(mOut, "\n]}}\n"); }

  private:
    std::FILE* mOut;
    bool mIsFirst = true;
};

class CsvWriter : public UnitWriter {
  public:
    explicit CsvWriter(std::FILE* out) : mOut(out) {
        fmt::print(mOut, "track,number,time_us,sync,size,sha1,end_us\n");
    }
    void write(const Unit& unit) override {
        fmt::print(mOut, "{},{},{},{},{},{},{}\n", unit.track, unit.number, unit.timeUs, int(unit.sync),
                   unit.size, unit.sha1, unit.endUs ? std::to_string(*unit.endUs) : std::string());
    }

  private:
    std::FILE* mOut;
};

}  // namespace

std::unique_ptr<UnitWriter> makeUnitWriter(Format format, const std::string& file, std::FILE* out) {
    switch (format) {
        case Format::kCsv:
            return std::make_unique<CsvWriter>(out);
        case Format::kTable:
            return std::make_unique<TableWriter>(out);
        case Format::kJson:
            return std::make_unique<JsonWriter>(file, out);
        case Format::kJsonLines:
            break;
    }
    return std::make_unique<JsonLinesWriter>(out);
}

}  // namespace mkvx
