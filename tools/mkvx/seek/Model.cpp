#include "seek/Model.h"

namespace mkvx {
namespace {

// A table has to see all rows, and the JSON of one object is one line.
class SeeksAtEnd : public Listing<SeekProbe> {
  public:
    SeeksAtEnd(Format format, const std::string& file, std::FILE* out)
        : Listing(out), mFormat(format), mReport{file, {}} {}

    void write(const SeekProbe& seek) override { mReport.seeks.push_back(seek); }
    void finish() override { print(mReport, mFormat, mOut); }

  private:
    const Format mFormat;
    SeekReport mReport;
};

}  // namespace

std::unique_ptr<Listing<SeekProbe>> newSeekListing(Format format, const std::string& file, std::FILE* out) {
    if (format == Format::kJsonLines) return std::make_unique<JsonLines<SeekProbe>>(out);
    return std::make_unique<SeeksAtEnd>(format, file, out);
}

}  // namespace mkvx
