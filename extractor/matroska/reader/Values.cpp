#include "matroska/reader/Values.h"

#include <string.h>

#include <algorithm>
#include <new>

#include "matroska/reader/MatroskaReader.h"
#include "matroska/reader/Vint.h"

namespace MatroskaExtReader {

namespace {

// Reads the last `count` of the element's bytes as a big-endian number; the position ends behind the element.
Result ReadBigEndian(CMatroskaNode* node, unsigned count, uint64_t* value) {
    uint8_t bytes[8];
    CMatroskaFile* file = node->File();
    if (node->Size() > count) {
        if (!file->CanDeliver(file->Position(), node->Size())) return kFailure;
        file->SeekTo(file->Position() + node->Size() - count);
    }
    if (count != 0 && Failed(file->Read(bytes, count))) return kFailure;
    *value = AppendBigEndian(0, bytes, count);
    return kOk;
}

// The bytes of a string, bounded by what the source has and what the model may keep.
std::unique_ptr<char[]> AllocateText(CMatroskaNode* node) {
    CMatroskaFile* file = node->File();
    const uint64_t size = node->Size();
    if (!file->CanDeliver(file->Position(), size)) {
        file->Losses.Add(LossKind::kBeyondSource, node->HeaderStart(), size);
        return nullptr;
    }
    if (size > limit::kStringBytes || !file->AdmitBytes(node->HeaderStart(), size)) return nullptr;
    return std::unique_ptr<char[]>(new (std::nothrow) char[static_cast<size_t>(size) + 1]());
}

}  // namespace

template <typename T, typename Tag>
Result CSimpleVar<T, Tag>::Parse(CMatroskaNode* node) {
    mSet = true;
    mValue = T();
    return node->File()->Read(mValue);
}

template class CSimpleVar<int16_t, CShort>;
template class CSimpleVar<uint8_t, CByte>;
template class CSimpleVar<uint64_t, CUInt>;
template class CSimpleVar<int64_t, CInt>;
template class CSimpleVar<double, CFloat>;
template class CSimpleVar<int32_t, CID>;
template class CSimpleVar<uint64_t, CLength>;

Result CUInt::Parse(CMatroskaNode* node) {
    mValue = 0;
    const unsigned count = static_cast<unsigned>(std::min<uint64_t>(node->Size(), 8));
    const Result result = ReadBigEndian(node, count, &mValue);
    mSet = !Failed(result);
    return result;
}

Result CInt::Parse(CMatroskaNode* node) {
    mValue = 0;
    mSet = false;
    if (node->Size() > 8) return kFailure;
    const unsigned count = static_cast<unsigned>(node->Size());
    uint64_t bits = 0;
    const Result result = ReadBigEndian(node, count, &bits);
    if (Failed(result)) return result;
    const unsigned unused = 64 - 8 * count;
    mValue = count == 0 ? 0 : static_cast<int64_t>(bits << unused) >> unused;
    mSet = true;
    return kOk;
}

Result CFloat::Parse(CMatroskaNode* node) {
    mValue = 0.0;
    Result result = kFailure;
    if (node->Size() == sizeof(float)) {
        float narrow = 0;
        result = node->File()->Read(narrow);
        if (!Failed(result)) mValue = narrow;
    } else if (node->Size() == sizeof(double)) {
        result = node->File()->Read(mValue);
    }
    mSet = !Failed(result);
    return result;
}

Result CID::Parse(CMatroskaNode* node) {
    uint8_t bytes[4];
    const unsigned length = TakeNumber(IdLength, *node->File(), bytes, 0, 0);
    mSet = length != 0;
    mValue = static_cast<int32_t>(AppendBigEndian(0, bytes, length));
    return mSet ? kOk : kFailure;
}

Result CLength::Parse(CMatroskaNode* node) {
    TakenSize size;
    mSet = TakeSize(*node->File(), mSigned, &size);
    mUnknown = mSet && size.isUnknown;
    mValue = mSet ? size.value : 0;
    return mSet ? kOk : kFailure;
}

Result CANSI::Parse(CMatroskaNode* node) {
    mText.clear();
    const std::unique_ptr<char[]> text = AllocateText(node);
    if (text == nullptr) return kFailure;
    const uint32_t size = static_cast<uint32_t>(node->Size());
    if (Failed(node->Read(reinterpret_cast<uint8_t*>(text.get()), size))) return kFailure;
    mText.setTo(text.get(), size);
    return kOk;
}

Result CUTF8::Parse(CMatroskaNode* node) {
    mText.clear();
    const std::unique_ptr<char[]> text = AllocateText(node);
    if (text == nullptr) return kFailure;
    const uint32_t size = static_cast<uint32_t>(node->Size());
    (void)node->Read(reinterpret_cast<uint8_t*>(text.get()),
                     size);  // what was read counts, the rest is zeros
    mText.setTo(text.get(), size + 1);
    return kOk;
}

Result ByteBuffer::Parse(CMatroskaNode* node) {
    Clear();
    CMatroskaFile* file = node->File();
    const uint64_t size = node->Size();
    if (size > UINT32_MAX || !file->CanDeliver(file->Position(), size)) {
        file->Losses.Add(LossKind::kBeyondSource, node->HeaderStart(), size);
        return kFailure;
    }
    if (!file->AdmitBytes(node->HeaderStart(), size)) return kFailure;
    return ReadPayload(node);
}

Result ByteBuffer::ReadPayload(CMatroskaNode* node) {
    CMatroskaFile* file = node->File();
    const uint64_t size = node->Size();
    if (!Resize(static_cast<uint32_t>(size))) {
        file->Losses.Add(LossKind::kRefusedAllocation, node->HeaderStart(), size);
        return kOutOfMemory;
    }
    const Result result = node->Read(data(), mSize);
    if (Failed(result)) Clear();
    return result;
}

bool ByteBuffer::Resize(uint32_t size) {
    mData.reset();
    mData.reset(new (std::nothrow) uint8_t[size]);
    mSize = mData != nullptr ? size : 0;
    return mData != nullptr;
}

void ByteBuffer::Clear() {
    mData.reset();
    mSize = 0;
}

size_t ByteBuffer::TextLength() const {
    return mSize == 0 ? 0 : strnlen(reinterpret_cast<const char*>(data()), mSize);
}

bool ByteBuffer::StartsWith(const char* text) const {
    const size_t length = strlen(text);
    return TextLength() >= length && memcmp(data(), text, length) == 0;
}

bool ByteBuffer::Contains(const char* text) const {
    return mSize != 0 && memmem(data(), TextLength(), text, strlen(text)) != nullptr;
}

bool ByteBuffer::Equals(const char* text) const {
    return TextLength() == strlen(text) && StartsWith(text);
}

}  // namespace MatroskaExtReader
