// MetaData: typed values under 32-bit keys, for tracks, files and single access units.
//
// Keys are four characters, the first in the most significant byte. Values are copied in and out; pointers
// that a find hands out stay valid until the next change of this MetaData. Not thread-safe, except that the
// object may be shared for reading.
//
// Deliberate: every set... answers whether it replaced an existing value, not whether it succeeded. A find
// answers false, and leaves its outputs alone, when the key is missing or holds another type; a value of the
// right type but the wrong size (setData can store such) aborts.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <atomic>

#include <utils/KeyedVector.h>
#include <utils/RefBase.h>
#include <utils/String8.h>

namespace android {

enum {
    kKeyMIMEType = 'mime',               // C string
    kKeyWidth = 'widt',                  // int32, pixels
    kKeyHeight = 'heig',                 // int32, pixels
    kKeyDisplayWidth = 'dWid',           // int32
    kKeyDisplayHeight = 'dHgt',          // int32
    kKeySARWidth = 'sarW',               // int32
    kKeySARHeight = 'sarH',              // int32
    kKeyCropRect = 'crop',               // rectangle
    kKeyRotation = 'rotA',               // int32, degrees
    kKeyStride = 'strd',                 // int32
    kKeySliceHeight = 'slht',            // int32
    kKeyFrameRate = 'frmR',              // int32, frames per second
    kKeyColorFormat = 'colf',            // int32
    kKeySampleRate = 'srte',             // int32, Hz
    kKeyChannelCount = '#chn',           // int32
    kKeyChannelMask = 'chnm',            // int32
    kKeyBitRate = 'brte',                // int32, bits per second
    kKeyESDS = 'esds',                   // data, ISO/IEC 14496-1 ES_Descriptor
    kKeyAACProfile = 'aacp',             // int32
    kKeyAVCC = 'avcc',                   // data, ISO/IEC 14496-15 record
    kKeyHVCC = 'hvcc',                   // data, ISO/IEC 14496-15 record
    kKeyD263 = 'd263',                   // data
    kKeyVorbisInfo = 'vinf',             // data
    kKeyVorbisBooks = 'vboo',            // data
    kKeyOpusHeader = 'ohdr',             // data
    kKeyOpusCodecDelay = 'ocod',         // 64-bit, nanoseconds
    kKeyOpusSeekPreRoll = 'ospr',        // 64-bit, nanoseconds
    kKeyVideoProfile = 'vprf',           // int32
    kKeyVideoLevel = 'vlev',             // int32
    kKeyWantsNALFragments = 'NALf',      // int32, 0 or 1
    kKeyEncryptedSizes = 'encr',         // array of size_t
    kKeyPlainSizes = 'plai',             // array of size_t
    kKeyPssh = 'pssh',                   // data
    kKeyTime = 'time',                   // int64, microseconds
    kKeyDecodingTime = 'decT',           // int64, microseconds
    kKeyTargetTime = 'tarT',             // int64, microseconds
    kKeyDuration = 'dura',               // int64, microseconds
    kKeyThumbnailTime = 'thbT',          // int64, microseconds
    kKeyIsSyncFrame = 'sync',            // int32, 0 or 1
    kKeyIsCodecConfig = 'conf',          // int32, 0 or 1
    kKeyMaxInputSize = 'inpS',           // int32, bytes
    kKeyTrackID = 'trID',                // int32
    kKeyMediaLanguage = 'lang',          // C string
    kKeyFileType = 'ftyp',               // int32
    kKeyTimeScale = 'tmsl',              // int32
    kKeyIsDRM = 'idrm',                  // int32, 0 or 1
    kKeyRequiresSecureBuffers = 'secu',  // int32, 0 or 1
    kKeyEncoderDelay = 'encd',           // int32, frames
    kKeyEncoderPadding = 'encp',         // int32, frames
    kKeyIsADTS = 'adts',                 // int32, 0 or 1
    kKeyAACAOT = 'aaot',                 // int32
    kKeyTextFormatData = 'text',         // data
    kKeyTitle = 'titl',                  // C string
    kKeyArtist = 'arti',                 // C string
    kKeyAlbum = 'albu',                  // C string
    kKeyAuthor = 'auth',                 // C string
    kKeyYear = 'year',                   // C string
    kKeyDate = 'date',                   // C string
    kKeyLocation = 'loc ',               // C string
    kKeyAlbumArt = 'albA',               // data
    kKeyAlbumArtMIME = 'alAM',           // C string
    kKeyTrackIsAutoselect = 'auto',      // int32, 0 or 1
    kKeyTrackIsDefault = 'dflt',         // int32, 0 or 1
    kKeyTrackIsForced = 'frcd',          // int32, 0 or 1
    kKeyCryptoKey = 'cryK',              // data
    kKeyCryptoIV = 'cryI',               // data
    kKeyCryptoMode = 'cryM',             // int32
    kKeyPlatformPrivate = 'priv',        // pointer
};

// Types of data values. Readers of such a key do not look at the type.
enum {
    kTypeESDS = 'esds',
    kTypeAVCC = 'avcc',
    kTypeHVCC = 'hvcc',
    kTypeD263 = 'd263',
};

class MetaData : public RefBase {
  public:
    enum Type {
        TYPE_NONE = 'none',
        TYPE_C_STRING = 'cstr',
        TYPE_INT32 = 'in32',
        TYPE_INT64 = 'in64',
        TYPE_FLOAT = 'floa',
        TYPE_POINTER = 'ptr ',
        TYPE_RECT = 'rect',
    };

    MetaData();
    MetaData(const MetaData& from);

    // These hide RefBase's from sp<MetaData>: the metadata of every unit is handed out twice at least, and a
    // count of its own costs one atomic operation where RefBase takes two. All that are counted here hold one
    // reference of RefBase's together. What a wp<MetaData> is promoted to holds one too, uncounted; it does
    // not matter which of them goes first.
    void incStrong(const void* id) const {
        if (mHolders.fetch_add(1, std::memory_order_relaxed) == 0) RefBase::incStrong(id);
    }
    void decStrong(const void* id) const {
        int32_t holders = mHolders.load(std::memory_order_acquire);
        while (holders > 0 && !mHolders.compare_exchange_weak(holders, holders - 1, std::memory_order_acq_rel,
                                                              std::memory_order_relaxed)) {
        }
        if (holders <= 1) RefBase::decStrong(id);
    }
    int32_t getStrongCount() const {
        const int32_t holders = mHolders.load(std::memory_order_acquire);
        return RefBase::getStrongCount() + (holders > 0 ? holders - 1 : 0);
    }

    void clear();
    // Whether there was one.
    bool remove(uint32_t key);

    // With its NUL; null is the caller's error.
    bool setCString(uint32_t key, const char* value);
    bool setInt32(uint32_t key, int32_t value);
    bool setInt64(uint32_t key, int64_t value);
    bool setFloat(uint32_t key, float value);
    bool setPointer(uint32_t key, void* value);
    bool setRect(uint32_t key, int32_t left, int32_t top, int32_t right, int32_t bottom);
    // Any type, any size, 0 too. `data` must not point into this MetaData.
    bool setData(uint32_t key, uint32_t type, const void* data, size_t size);

    bool findCString(uint32_t key, const char** value);
    bool findInt32(uint32_t key, int32_t* value);
    bool findInt64(uint32_t key, int64_t* value);
    bool findFloat(uint32_t key, float* value);
    bool findPointer(uint32_t key, void** value);
    bool findRect(uint32_t key, int32_t* left, int32_t* top, int32_t* right, int32_t* bottom);
    bool findData(uint32_t key, uint32_t* type, const void** data, size_t* size) const;
    bool hasData(uint32_t key) const;

    // One INFO line per value, highest key first.
    void dumpToLog() const;

  protected:
    ~MetaData() override;

  private:
    friend void ReturnMetaData(MetaData* metaData);

    // Nobody but the caller refers to it, and what others did to it has happened.
    bool isHeldOnce() const {
        return mHolders.load(std::memory_order_acquire) == 1 && getWeakRefs()->getWeakCount() == 1;
    }

    // An access unit carries a time, a sync flag and little else: so many values need no memory of their own.
    enum { kInlineItems = 4, kInlineBytes = 16 };

    struct Item {
        uint32_t key;
        uint32_t type;
        size_t size;
        union {
            uint8_t bytes[kInlineBytes];  // values of up to kInlineBytes
            void* block;                  // owned (malloc), larger values
        };

        const void* data() const { return size <= kInlineBytes ? bytes : block; }
        void store(uint32_t newType, const void* data, size_t newSize);
        void release();
    };

    size_t lowerBound(uint32_t key) const;
    const Item* find(uint32_t key) const;
    const Item* findTyped(uint32_t key, uint32_t type, size_t size) const;
    Item* insertAt(size_t index);
    bool setBytes(uint32_t key, uint32_t type, const void* data, size_t size);
    static String8 describe(const Item& item);

    mutable std::atomic<int32_t> mHolders{0};
    Item mInline[kInlineItems];
    Item* mItems;  // sorted by key; mInline, or an owned block (malloc)
    uint32_t mCount;
    uint32_t mCapacity;

    MetaData& operator=(const MetaData&);
};

}  // namespace android
