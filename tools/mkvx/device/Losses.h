// What the reader lost, and how each kind of loss is told. The reader owns the table; mkvx takes its words
// from there.
#pragma once
#include "matroska/reader/Losses.h"

namespace mkvx {

using MatroskaExtReader::kLossKinds;
using MatroskaExtReader::kLossTexts;
using MatroskaExtReader::Loss;
using MatroskaExtReader::LossKind;
using MatroskaExtReader::LossText;

// How many losses of a file are kept with their places.
constexpr size_t kLossesKept = MatroskaExtReader::Losses::kKept;

// The row of that kind.
constexpr const LossText& textOf(LossKind kind) {
    return MatroskaExtReader::TextOf(kind);
}

}  // namespace mkvx
