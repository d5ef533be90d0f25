// Undoing a track's content encodings on frame data.
#include <string.h>

#include "matroska/reader/Inflate.h"
#include "matroska/reader/MatroskaElements.h"

namespace MatroskaExtReader {

bool ContentEncoding::IsZlib() const {
    return ContentEncodingType.Get() == encoding::kTypeCompression &&
           Compression.ContentCompAlgo.Get() == encoding::kAlgoZlib;
}

bool ContentEncoding::IsHeaderStripping() const {
    return ContentEncodingType.Get() == encoding::kTypeCompression &&
           Compression.ContentCompAlgo.Get() == encoding::kAlgoHeaderStripping;
}

int ContentEncodingCompare(const AutoPtr<ContentEncoding>* a, const AutoPtr<ContentEncoding>* b) {
    const uint32_t orderA = static_cast<uint32_t>((*a)->ContentEncodingOrder.Get());
    const uint32_t orderB = static_cast<uint32_t>((*b)->ContentEncodingOrder.Get());
    return static_cast<int>(orderA - orderB);
}

int TrackEntry::Expand(ByteBuffer& data, uint64_t scope, Inflater& inflater, uint32_t limit) const {
    for (size_t i = Encodings.size(); i-- > 0;) {  // the encoding that was applied last comes off first
        const ContentEncoding& encoding = *Encodings[i];
        if ((encoding.ContentEncodingScope.Get() & scope) == 0) continue;
        if (encoding.ContentEncodingType.Get() == encoding::kTypeEncryption) return 0;
        if (encoding.ContentEncodingType.Get() != encoding::kTypeCompression) continue;
        // Deliberate: a restored header answers 0 as well, so that encodings of lower order are left alone.
        if (data.Decompress(encoding.Compression, inflater, limit) == 0) return 0;
    }
    return 1;
}

int ByteBuffer::Decompress(const ContentCompression& compression, Inflater& inflater, uint32_t limit) {
    const uint64_t algorithm = compression.ContentCompAlgo.Get();
    if (algorithm == encoding::kAlgoHeaderStripping) {
        RestoreStrippedHeader(compression.ContentCompSettings, limit);
        return 0;
    }
    if (algorithm != encoding::kAlgoZlib || !inflater.Run(data(), mSize, limit)) return 0;
    ByteBuffer plain;
    if (!plain.Resize(inflater.OutputSize())) return 0;
    if (plain.mSize != 0) memcpy(plain.data(), inflater.Output(), plain.mSize);
    *this = std::move(plain);
    return 1;
}

void ByteBuffer::RestoreStrippedHeader(const ByteBuffer& header, uint32_t limit) {
    if (header.empty() || header.size() > limit || mSize > limit - header.size()) return;
    ByteBuffer whole;
    if (!whole.Resize(header.size() + mSize)) return;
    memcpy(whole.data(), header.data(), header.size());
    if (mSize != 0) memcpy(whole.data() + header.size(), data(), mSize);
    *this = std::move(whole);
}

}  // namespace MatroskaExtReader
