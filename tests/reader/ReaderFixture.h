// A parsed file in memory, for tests of the reader alone.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "matroska/reader/MatroskaReader.h"
#include "support/EbmlWriter.h"
#include "support/FaultySource.h"

namespace testing_support {

namespace reader = MatroskaExtReader;

// A file object on these bytes; nothing is parsed yet.
struct OpenFile {
    explicit OpenFile(Bytes bytes, Faults faults = {})
        : source(new FaultySource(std::move(bytes), faults)), file(source) {}

    android::sp<reader::CMatroskaNode> Root() { return new reader::CMatroskaNode(&file); }
    // The node of the first Segment, without parsing its contents into the model.
    android::sp<reader::CMatroskaNode> SegmentNode() { return Root()->Child(id::kSegment, true); }
    reader::Segment& Model() { return file.Segment; }

    android::sp<FaultySource> source;
    reader::CMatroskaFile file;
};

// The same, after Init.
struct InitialisedFile : OpenFile {
    explicit InitialisedFile(const Document& document, Faults faults = {})
        : OpenFile(document.bytes, faults), result(file.Init()) {}
    reader::Result result;
};

inline std::string Show(const reader::ByteBuffer& bytes) {
    return ToHex(bytes.data(), bytes.size());
}

}  // namespace testing_support
