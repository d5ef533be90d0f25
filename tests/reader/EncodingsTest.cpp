// Content encodings: what they make of a stored frame, in every order, and zlib streams of every kind.
#include "reader/BlockFixture.h"

#include <zlib.h>

#include <random>

namespace testing_support {
namespace {

Element Scoped(uint64_t order, uint64_t scope, uint64_t algorithm, const Bytes& settings) {
    return Master(id::kContentEncoding,
                  {Uint(id::kContentEncodingOrder, order), Uint(id::kContentEncodingScope, scope),
                   Master(id::kContentCompression,
                          {Uint(id::kContentCompAlgo, algorithm), Bin(id::kContentCompSettings, settings)})});
}

std::string Delivered(const Elements& encodings, const Bytes& stored) {
    OneBlock one(EncodedTrack(encodings), SimpleBlock(1, 0, 0, stored));
    return one.Deliver();
}

TEST(Encodings, EveryOrderOfUndoing) {
    const Bytes frame = Hex("0102030405");
    const Bytes packed = Zlib(frame);
    const Bytes strip = Hex("AABB");
    const struct {
        const char* name;
        Elements encodings;
        Bytes stored;
        Bytes delivered;
    } rows[] = {
        {"zlib", {Encoding(0, 0, 0)}, packed, frame},
        {"stripped", {Encoding(0, 0, 3, strip)}, frame, Concat({strip, frame})},
        {"stripped of nothing", {Encoding(0, 0, 3)}, frame, frame},
        {"stripping undone first ends the walk",
         {Encoding(0, 0, 0), Encoding(1, 0, 3, strip)},
         packed,
         Concat({strip, packed})},
        {"the same, stored the other way round",
         {Encoding(1, 0, 3, strip), Encoding(0, 0, 0)},
         packed,
         Concat({strip, packed})},
        {"zlib undone first, then stripping",
         {Encoding(0, 0, 3, strip), Encoding(1, 0, 0)},
         packed,
         Concat({strip, frame})},
        {"zlib twice", {Encoding(0, 0, 0), Encoding(1, 0, 0)}, Zlib(packed), frame},
        {"empty stripping ends the walk too", {Encoding(0, 0, 0), Encoding(1, 0, 3)}, packed, packed},
        {"stripped twice, without zlib: ascending order",
         {Encoding(1, 0, 3, Hex("22")), Encoding(0, 0, 3, Hex("11"))},
         frame,
         Concat({Hex("1122"), frame})},
        {"encrypted", {Encoding(0, 1, 0)}, packed, packed},
        {"encryption stops what lies below it", {Encoding(0, 0, 0), Encoding(1, 1, 0)}, packed, packed},
        {"an unsupported algorithm stops too", {Encoding(0, 0, 0), Encoding(1, 0, 1)}, packed, packed},
        {"other types are skipped", {Encoding(0, 0, 0), Encoding(1, 2, 1)}, packed, frame},
        {"zlib for the private data only", {Scoped(0, 2, 0, {})}, packed, packed},
        {"scope 3 has the frame's bit", {Scoped(0, 3, 0, {})}, packed, frame},
        {"zlib that is none", {Encoding(0, 0, 0)}, frame, frame},
        {"equal orders keep the stored one: the last is undone first",
         {Encoding(0, 0, 3, strip), Encoding(0, 0, 0)},
         packed,
         Concat({strip, frame})},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(ToHex(row.delivered), Delivered(row.encodings, row.stored));
    }
}

TEST(Encodings, EveryLacedFrameIsInflatedByItself) {
    const Bytes first = Bytes(500, 7), second = Pattern(50, 1);
    OneBlock one(EncodedTrack({Encoding(0, 0, 0)}),
                 SimpleBlock(1, 0, 0, Lacing::kXiph, {Zlib(first), Hex("BAD0"), Zlib(second)}));
    EXPECT_EQ(ToHex(Concat({first, Hex("BAD0"), second})), one.Deliver());
}

TEST(Encodings, ABlockGrowsToItsLimitAndNoFurther) {
    constexpr uint32_t kMost = reader::limit::kRestoredBlockBytes, kFrames = 256;
    std::vector<Bytes> frames(kFrames, Bytes(1));
    for (const uint32_t expected : {kMost, 0u}) {
        OneBlock one(EncodedTrack({Encoding(0, 0, 3, Bytes(kMost / kFrames - 1))}),
                     SimpleBlock(1, 0, 0, Lacing::kXiph, frames));
        EXPECT_EQ(expected, one.Block().GetSize(one.node.get(), one.entry));
        frames.back().push_back(0);
    }
}

TEST(Encodings, OfAnEncryptionEveryElementIsKept) {
    const Element settings = Master(
        id::kContentEncryption, {Uint(id::kContentEncAlgo, 5), Bin(id::kContentEncKeyId, Hex("01")),
                                 Bin(id::kContentSignature, Hex("02")), Bin(id::kContentSigKeyId, Hex("03")),
                                 Uint(id::kContentSigAlgo, 6), Uint(id::kContentSigHashAlgo, 7)});
    InitialisedFile open(OneBlock::File(EncodedTrack({Master(id::kContentEncoding, {settings})}),
                                        SimpleBlock(1, 0, 0, Hex("00"))));
    const reader::ContentEncryption& kept = open.file.FindTrack(1)->Encodings[0]->Encryption;
    EXPECT_EQ(5, kept.ContentEncAlgo.Get());
    EXPECT_EQ("01", Show(kept.ContentEncKeyID));
    EXPECT_EQ("02", Show(kept.ContentSignature));
    EXPECT_EQ("03", Show(kept.ContentSigKeyID));
    EXPECT_EQ(6, kept.ContentSigAlgo.Get());
    EXPECT_EQ(7, kept.ContentSigHashAlgo.Get());
}

TEST(Encodings, CompareAscendingByTheLow32Bits) {
    auto encoding = [](uint64_t order) {
        reader::AutoPtr<reader::ContentEncoding> made = new reader::ContentEncoding;
        made->ContentEncodingOrder.Set(order);
        return made;
    };
    const auto zero = encoding(0), one = encoding(1), high = encoding(1ull << 32);
    EXPECT_LT(reader::ContentEncodingCompare(&zero, &one), 0);
    EXPECT_GT(reader::ContentEncodingCompare(&one, &zero), 0);
    EXPECT_EQ(0, reader::ContentEncodingCompare(&zero, &high));
}

// --- zlib, against a plain statement of when a stream counts as complete ---

// Output windows of 1000 bytes; complete when room is left, no input is left, or the stream has ended.
Bytes InflateInSteps(const Bytes& stored) {
    z_stream stream = {};
    Bytes out;
    if (inflateInit(&stream) != Z_OK) return stored;
    stream.next_in = const_cast<Bytef*>(stored.data());
    stream.avail_in = static_cast<uInt>(stored.size());
    int status = Z_OK;
    do {
        out.resize(out.size() + 1000);
        stream.next_out = out.data() + out.size() - 1000;
        stream.avail_out = 1000;
        status = inflate(&stream, Z_NO_FLUSH);
        if (static_cast<unsigned>(status) > 1) {
            inflateEnd(&stream);
            return stored;
        }
    } while (stream.avail_out == 0 && stream.avail_in != 0 && status != Z_STREAM_END);
    out.resize(stream.total_out);
    inflateEnd(&stream);
    return out;
}

std::vector<Bytes> Contents(size_t size) {
    std::mt19937 random(static_cast<uint32_t>(size) + 1);
    Bytes noise(size);
    for (uint8_t& byte : noise) byte = static_cast<uint8_t>(random());
    return {Bytes(size, 0), Pattern(size, 9), noise};
}

TEST(Zlib, StreamsOfEverySizeWholeAndDamaged) {
    for (size_t size : {0u, 1u, 999u, 1000u, 1001u, 1999u, 2000u, 2001u, 5000u, 70000u}) {
        for (const Bytes& content : Contents(size)) {
            const Bytes whole = Zlib(content);
            ASSERT_EQ(ToHex(content), Delivered({Encoding(0, 0, 0)}, whole)) << size;
            for (size_t cut : {1u, 3u, 4u, 5u, 6u, 8u, 100u}) {
                if (cut > whole.size()) continue;
                const Bytes truncated(whole.begin(), whole.end() - static_cast<long>(cut));
                EXPECT_EQ(ToHex(InflateInSteps(truncated)), Delivered({Encoding(0, 0, 0)}, truncated))
                    << size << " bytes, cut by " << cut;
            }
            for (size_t at : {size_t{0}, size_t{1}, size_t{2}, whole.size() / 2, whole.size() - 1}) {
                Bytes damaged = whole;
                damaged[at] ^= 0x5A;
                EXPECT_EQ(ToHex(InflateInSteps(damaged)), Delivered({Encoding(0, 0, 0)}, damaged))
                    << size << " bytes, damaged at " << at;
            }
            Bytes trailing = whole;
            trailing.insert(trailing.end(), 7, 0xEE);
            EXPECT_EQ(ToHex(content), Delivered({Encoding(0, 0, 0)}, trailing));
        }
    }
}

TEST(Zlib, FramesThatInflateBeyondTheLimitStayAsStored) {
    const Bytes below = Zlib(Bytes(reader::limit::kInflatedFrameBytes, 0));
    const Bytes above = Zlib(Bytes(reader::limit::kInflatedFrameBytes + 1, 0));
    OneBlock fits(EncodedTrack({Encoding(0, 0, 0)}), SimpleBlock(1, 0, 0, below));
    EXPECT_EQ(reader::limit::kInflatedFrameBytes, fits.Block().GetSize(fits.node.get(), fits.entry));
    EXPECT_EQ(ToHex(above), Delivered({Encoding(0, 0, 0)}, above));
}

// A few bytes that claim to hold very many are not looked into for the sake of a codec's configuration.
TEST(Zlib, WhileAFileIsBeingOpenedSmallBlocksHoldLess) {
    const Bytes content(5u << 20, 0), stored = Zlib(content);
    ASSERT_LT(reader::limit::RestoredBytesWhileOpening(stored.size() + 4), content.size());
    OneBlock one(EncodedTrack({Encoding(0, 0, 0)}), SimpleBlock(1, 0, 0, stored));
    {
        const reader::CMatroskaFile::Opening opening(&one.file);
        EXPECT_EQ(stored.size(), one.Block().GetSize(one.node.get(), one.entry));
    }
    OneBlock later(EncodedTrack({Encoding(0, 0, 0)}), SimpleBlock(1, 0, 0, stored));
    EXPECT_EQ(content.size(), later.Block().GetSize(later.node.get(), later.entry));
}

}  // namespace
}  // namespace testing_support
