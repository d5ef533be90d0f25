// Typed element values (RFC 8794, section 7). Each reads itself at the file's position, which the caller's
// walk has left right behind the element's header, and takes the element's size from the node.
//
// Every Parse answers kOk or a failure and leaves the value 0 or empty when it fails; the enclosing master
// ignores that and keeps what did parse. One thread at a time per file.
#pragma once

#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/String8.h>
#include <media/stagefright/foundation/AString.h>

#include <stdint.h>

#include <memory>

#include "matroska/reader/Containers.h"
#include "matroska/reader/ResultCodes.h"

namespace MatroskaExtReader {

class ContentCompression;
class Inflater;

// One scalar and whether it was read. `Tag` keeps classes of the same scalar apart.
template <typename T, typename Tag>
class CSimpleVar {
  public:
    CSimpleVar() : mValue(), mSet(false) {}
    explicit CSimpleVar(T value) : mValue(value), mSet(true) {}
    CSimpleVar(const CSimpleVar&) = default;
    CSimpleVar& operator=(const CSimpleVar&) = default;
    virtual ~CSimpleVar() {}

    // The base reads exactly sizeof(T) big-endian bytes, whatever the element's size.
    virtual Result Parse(CMatroskaNode* node);

    T Get() const { return mValue; }
    bool IsSet() const { return mSet; }
    void Set(T value) {
        mValue = value;
        mSet = true;
    }

  protected:
    T mValue;
    bool mSet;
};

// Unsigned integer of the element's size; of more than 8 bytes the last 8 count. Size 0 is the value 0.
class CUInt : public CSimpleVar<uint64_t, CUInt> {
  public:
    using CSimpleVar::CSimpleVar;
    Result Parse(CMatroskaNode* node) override;
};

// Signed integer of 0 to 8 bytes, sign-extended; larger elements fail.
class CInt : public CSimpleVar<int64_t, CInt> {
  public:
    using CSimpleVar::CSimpleVar;
    Result Parse(CMatroskaNode* node) override;
};

// IEEE 754 float of 4 or 8 bytes; any other size fails.
class CFloat : public CSimpleVar<double, CFloat> {
  public:
    using CSimpleVar::CSimpleVar;
    Result Parse(CMatroskaNode* node) override;
};

// An element ID of one to four bytes, marker bits kept.
class CID : public CSimpleVar<int32_t, CID> {
  public:
    using CSimpleVar::CSimpleVar;
    Result Parse(CMatroskaNode* node) override;
};

// An element size of one to eight bytes. An unknown size becomes what is left of the file.
class CLength : public CSimpleVar<uint64_t, CLength> {
  public:
    CLength() : CLength(false) {}
    Result Parse(CMatroskaNode* node) override;
    // The last Parse met the all-ones marker of an unknown size.
    bool IsUnknown() const { return mUnknown; }

  protected:
    explicit CLength(bool isSigned) : mSigned(isSigned), mUnknown(false) {}
    bool mSigned;
    bool mUnknown;
};

// The signed difference of EBML lacing (RFC 9559, section 10.3.3): a size with its bias taken off.
class CSignedLength : public CLength {
  public:
    CSignedLength() : CLength(true) {}
};

// Fixed widths.
class CShort : public CSimpleVar<int16_t, CShort> {};
class CByte : public CSimpleVar<uint8_t, CByte> {};

// What the two kinds of string have in common. Zero bytes inside are kept; comparisons look at the part
// before the first one. Empty means absent.
class TextValue {
  public:
    const char* c_str() const { return mText.c_str(); }
    size_t size() const { return mText.size(); }
    bool empty() const { return mText.size() == 0; }

  protected:
    android::AString mText;
};

// A string of the element's bytes.
class CANSI : public TextValue {
  public:
    Result Parse(CMatroskaNode* node);
};

// Deliberate: the stored string is one zero byte longer than the element; what was read counts even when it
// was cut short, and Parse fails only where the element is more than the source can deliver.
class CUTF8 : public TextValue {
  public:
    Result Parse(CMatroskaNode* node);
};

// An owned array of bytes whose size the file chose. Movable, not copyable.
class ByteBuffer {
  public:
    ByteBuffer() : mSize(0) {}

    // Reads the element's payload; refused before anything is allocated where the source cannot deliver it.
    Result Parse(CMatroskaNode* node);
    // Discards the old bytes and allocates `size` new, uninitialised ones; false (and empty) when refused.
    bool Resize(uint32_t size);
    void Clear();
    // Undoes one compression in place: 1 after a successful inflate, 0 otherwise, also after header
    // stripping. What would grow beyond `limit` bytes, or needs memory that is refused, stays as it is.
    int Decompress(const ContentCompression& compression, Inflater& inflater, uint32_t limit);

    const uint8_t* data() const { return mData.get(); }
    uint8_t* data() { return mData.get(); }
    uint32_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }

    // The bytes as text, which ends at the first zero byte: its length, and does it begin with, contain, or
    // equal `text`?
    size_t TextLength() const;
    bool StartsWith(const char* text) const;
    bool Contains(const char* text) const;
    bool Equals(const char* text) const;

    // The read alone: the caller has made sure that the source can deliver the element.
    Result ReadPayload(CMatroskaNode* node);

  private:
    void RestoreStrippedHeader(const ByteBuffer& header, uint32_t limit);

    uint32_t mSize;
    std::unique_ptr<uint8_t[]> mData;
};

// The reference-counted form of a class that is also embedded by value. (A RefBase must never be embedded:
// without a strong reference its counter block is not freed.)
template <typename T>
class Shared : public android::RefBase, public T {};

typedef Shared<ByteBuffer> CBinary;

}  // namespace MatroskaExtReader
