// The reader's file object: one byte source, one read position, the parsed document and what is derived from
// it.
//
// A read is one DataSource::readAt at the current position, of just the bytes that are wanted, unless a walk
// is on that takes pieces: an element's header with the head of its payload (32 bytes at the most, never past
// the end of what encloses it), or up to 64 KiB of a master that is parsed whole. Both are forgotten before
// the call that walks returns, and no bytes are cached, so the source is expected to cache. The object has no
// lock: one thread at a time, which the media sources' mutex provides. A source whose getSize fails or
// answers a negative number has an unknown length: navigation then takes the largest signed 64-bit length,
// and whether a payload can be delivered is found by reading its last byte.
#pragma once

#include <utils/Errors.h>
#include <utils/String8.h>
#include <media/stagefright/DataSource.h>

#include <stdint.h>
#include <string.h>

#include "matroska/reader/BlockRuns.h"
#include "matroska/reader/CheckedMath.h"
#include "matroska/reader/ElementIds.h"
#include "matroska/reader/Inflate.h"
#include "matroska/reader/Limits.h"
#include "matroska/reader/Losses.h"
#include "matroska/reader/MatroskaElements.h"
#include "matroska/reader/Node.h"
#include "matroska/reader/Pieces.h"
#include "matroska/reader/Searches.h"
#include "matroska/reader/SeekIndex.h"
#include "matroska/reader/SubtitleQueue.h"

namespace MatroskaExtReader {

// Whether a document with this EBML header is read, and if not, what speaks against it.
enum class HeaderVerdict { kReadable, kOtherDocType, kTooNew };
HeaderVerdict JudgeHeader(const EBML& header);

class CMatroskaFile {
  public:
    // Asks the source for its size once and reads nothing. Without pieces every read is one of the source;
    // what is found in the file is the same.
    explicit CMatroskaFile(const android::sp<android::DataSource>& source, bool takesPieces = true);
    ~CMatroskaFile();
    CMatroskaFile(const CMatroskaFile&) = delete;
    CMatroskaFile& operator=(const CMatroskaFile&) = delete;

    // ---- bytes ----
    // `n` bytes at the position, which moves by what the source delivered. A short read is a failure.
    Result Read(uint8_t* buffer, uint32_t n) {
        if (mOpening.isOn && !MayAsk()) return Refuse();
        ++mReads;
        const uint8_t* const held = Held(n);
        if (held == nullptr) return ReadSource(buffer, n);
        memcpy(buffer, held, n);
        mPosition += n;
        if (mOpening.isOn) NoteServed(n);
        return kOk;
    }
    bool Take(uint8_t* buffer, unsigned n) { return !Failed(Read(buffer, n)); }
    // One big-endian value of T's width.
    template <typename T>
    Result Read(T& value);
    // How many reads there have been, as a measure of work: those that a piece answered count as any other.
    uint64_t Reads() const { return mReads; }
    // Counts what held bytes have answered otherwise.
    void CountReads(uint64_t count) { mReads += count; }
    uint64_t FailedReads() const { return mFailedReads; }
    // Grows with each loss, and each read that may be answered the next time: the source failed, or opening
    // has used up what it may ask for. A walk in which it does not grow ends at the same place again.
    uint64_t Trouble() const { return mUnsettledReads + Losses.Count(); }
    void SeekTo(uint64_t position) { mPosition = position; }
    uint64_t Position() const { return mPosition; }
    // Of the source, as navigation takes it; see HasKnownLength.
    uint64_t Length() const { return mLength; }
    bool HasKnownLength() const { return mHasKnownLength; }
    // The source says that it caches what it fetches over a network: no walk goes over its Clusters.
    bool CachesNetwork() const { return mCachesNetwork; }
    uint64_t LeftInFile() const { return mLength > mPosition ? mLength - mPosition : 0; }
    // Can the source deliver `size` bytes from `position`? Reads one byte where the length is not known;
    // leaves the position alone.
    bool CanDeliver(uint64_t position, uint64_t size) const {
        if (position > kMaxPosition || size > kMaxPosition - position) return false;
        if (mHasKnownLength) return position + size <= mLength;
        return size == 0 || FarEndAnswers(position, size);
    }

    // While one lives, nodes read an element's header with the head of its payload: for a walk that goes from
    // element to element, or that looks at what stands first in them.
    class Heads {
      public:
        explicit Heads(CMatroskaFile* file);
        ~Heads() { mFile->EndWalk(mOuter); }
        Heads(const Heads&) = delete;
        Heads& operator=(const Heads&) = delete;

      private:
        CMatroskaFile* mFile;
        Pieces::Walk mOuter;
    };

    // While one lives, the master at `node` is read in pieces, unless its size is unknown. Within a master
    // that is read so already it changes nothing.
    class Whole {
      public:
        explicit Whole(const CMatroskaNode* node);
        // What stands from the position on is read so, as far as it is asked for and never past `end`: the
        // pieces are no longer than a head at first.
        Whole(CMatroskaFile* file, uint64_t end);
        ~Whole() { mFile->EndWalk(mOuter); }
        Whole(const Whole&) = delete;
        Whole& operator=(const Whole&) = delete;

      private:
        void Begin(uint64_t end, uint32_t firstPiece);

        CMatroskaFile* mFile;
        Pieces::Walk mOuter;
    };

    // What is held of the master that is read in pieces from `position` on, for a parser that takes many
    // elements at a stroke; nothing where a limit of opening could be met within it.
    HeldBytes RestOfPiece(uint64_t position) const;
    // A header's worth of what is held at the position, with the same reserve.
    HeldBytes HeldHeader() const {
        const uint8_t* const held = mPieces.Find(mPosition, kMostHeader);
        const bool isSafe = held != nullptr && (!mOpening.isOn || CanAfford(kMostHeader));
        return {held, isSafe ? kMostHeader : 0, mPosition};
    }
    // Counts what a parser took of such bytes as the reads that it stands for. The position is where the last
    // of them ends.
    void PassHeld(const CountedBytes& taken) {
        SeekTo(taken.position + static_cast<uint64_t>(taken.LastRead() - taken.begin));
        mReads += taken.reads;
        if (mOpening.isOn) NotePassed(taken);
    }
    // The same for `bytes` of them that stand at the position, without a gap.
    void PassHeld(uint32_t bytes, unsigned reads) {
        mPosition += bytes;
        mReads += reads;
        if (!mOpening.isOn) return;
        mOpening.reads += reads;
        NoteServed(bytes);
    }

    // An element's header begins at the position, within what ends at `end`.
    void ExpectHeader(uint64_t end) {
        if (mWalk == Pieces::Walk::kHeads) HoldHead(end);
    }

    // What is held from `position` on.
    HeldBytes HeldFrom(uint64_t position) const { return mPieces.From(position); }
    // Holds a stretch of small elements that begin at `position`, within what ends at `end`: the walk that
    // is on knows what to make of it. None while the file is opened, which looks at first blocks only.
    HeldBytes HoldStretch(uint64_t position, uint64_t end);

    // While one lives, the file is being opened: what that may ask of the source is bounded (see
    // limit::kOpeningReads). Beyond it reads fail as they do at the end of a file, with one loss.
    class Opening {
      public:
        explicit Opening(CMatroskaFile* file) : mFile(file) { mFile->mOpening.isOn = true; }
        ~Opening() { mFile->FinishOpening(); }
        Opening(const Opening&) = delete;
        Opening& operator=(const Opening&) = delete;

      private:
        CMatroskaFile* mFile;
    };

    bool IsOpening() const { return mOpening.isOn; }

    // ---- document ----
    // The EBML header and the head of every Segment below `root`.
    Result Parse(CMatroskaNode* root);
    // The EBML header alone, with the same verdict, among the first limit::kSniffedElements top-level
    // elements: Segments are stepped over.
    Result ParseHeader(CMatroskaNode* root);
    // Opens the document: Parse, the Segment node, the facts of every track, the master track.
    Result Init();
    uint32_t GetTrackCnt() const;
    // The entry with that TrackNumber, or null. Of several Tracks elements the last one that has it answers,
    // within one element the first entry. Costs a binary search.
    TrackEntry* FindTrack(uint32_t number) const;

    // ---- sync index ----
    // Makes a Cue of every Cluster, for a file without Cues. They are visited, unless parsing has passed them
    // all.
    void RebuildIndex();
    // Makes the index of all Cues.
    android::status_t BuildIndexForSync();
    const SyncIndex& Index() const { return mIndex; }
    // How many of the Cue's first points a look-up for `timeUs` has to go through, backwards: in an ordered
    // list without wrapping times those at or before it, else all of them.
    size_t CountCuePointsUpTo(const Cue& cue, uint64_t timeUs) const;

    // ---- parts ----
    EBML Header;
    MatroskaExtReader::Segment Segment;
    SubtitleQueue Subtitles;
    BlockRunCache Blocks;
    Searches<UntimedCluster> Untimed;  // that a scan for the index went through

    CMatroskaNode* SegmentNode() const { return mSegmentNode.get(); }
    // A node of its own on the Segment's first Cluster, or null. It is looked for once, unless there was
    // damage on the way or a read failed: then each time, with the same losses.
    android::sp<CMatroskaNode> FirstCluster();
    // Moves `cluster` to the next one in the Segment for which `hasBlock` answers true, false where there is
    // none. A search that has gone far is made once, under the same conditions: `hasBlock` then sees only the
    // Cluster where it ended, whoever asks.
    template <typename HasBlock>
    bool MoveToNextCluster(CMatroskaNode* cluster, HasBlock hasBlock) {
        const uint64_t start = cluster->End(), reads = mReads, trouble = Trouble();
        const ClusterSearch* const known = mFarClusters.Find(start);
        bool isFound = known != nullptr ? known->Repeat(cluster) : cluster->Next(true);
        while (isFound && !hasBlock()) isFound = cluster->Next(true);  // bounded: every step moves forward
        if (known == nullptr && mReads - reads > kFarReads && Trouble() == trouble)
            mFarClusters.Note(ClusterSearch(start, isFound ? cluster : nullptr));
        return isFound;
    }
    // For a walk over all blocks from the first Cluster on: what it meets, and that it came to the end,
    // unless there was trouble since it began. Then it is known which tracks have blocks there.
    void NoteBlockOf(uint64_t trackNumber);
    void NoteAllBlocksMet(uint64_t troubleBefore) { mKnowsTracksOfBlocks = Trouble() == troubleBefore; }
    bool KnowsTracksOfBlocks() const { return mKnowsTracksOfBlocks; }
    bool HasNoBlockOf(const TrackEntry* track) const {
        return mKnowsTracksOfBlocks && track != nullptr && !track->HasBlock;
    }
    uint32_t MasterTrack() const { return mMasterTrack; }
    uint64_t TimecodeScale() const { return Segment.Info.TimecodeScale.Get(); }
    // Timecode units to microseconds, in wrapping unsigned 64-bit arithmetic.
    uint64_t ToMicroseconds(uint64_t units) const {
        return MultiplyWrappingDivide(units, TimecodeScale(), 1000);
    }
    Inflater& SharedInflater() { return mInflater; }

    // ---- damage ----
    // Searches the level-1 element behind a header at `start` that cannot be decoded, and goes to where
    // decoding goes on; false where there is none. A search is made once however many walks come by: where
    // it ended is remembered, unless it was the source that failed.
    bool SeekBehindDamage(uint64_t start);

    // ---- limits and losses ----
    // Counts the element at `node` as one more of its kind that is kept; false, with a loss, beyond the
    // limit.
    bool Admit(Kept kind, const CMatroskaNode* node);
    // How many more of a kind are kept, and that so many, not more, were taken.
    size_t RoomFor(Kept kind) const { return limit::kMostKept[Index(kind)] - mKept[Index(kind)]; }
    void Admit(Kept kind, size_t count) { mKept[Index(kind)] += static_cast<uint32_t>(count); }
    // The same for the bytes of a string or binary that the model keeps.
    bool AdmitBytes(uint64_t position, uint64_t size);
    uint32_t ChapterDepth = 0;  // of the chapter atom that is being parsed
    MatroskaExtReader::Losses Losses;

  private:
    friend class ChildWalk;

    static constexpr uint64_t kFarReads = 64;

    Result WalkTopLevel(CMatroskaNode* root, bool entersSegments);
    void IndexTracks();
    AutoPtr<Cue> VisitClusters();
    bool FarEndAnswers(uint64_t position, uint64_t size) const;
    static constexpr size_t Index(Kept kind) { return static_cast<size_t>(kind); }
    // So many reads of as many bytes are sure to be within what opening may ask for.
    bool CanAfford(uint64_t count) const {
        const uint64_t reads = limit::kOpeningReads + limit::kOpeningReadsPerByte * mOpening.furthest;
        const uint64_t bytes = limit::kOpeningBytes + limit::kOpeningBytesPerByte * mOpening.furthest;
        return !mOpening.isExhausted && mOpening.reads + count <= reads && mOpening.bytes + count <= bytes;
    }
    // Counts one more read, unless opening has used up what it may.
    bool MayAsk() const {
        mOpening.isExhausted = !CanAfford(1);
        mOpening.reads += mOpening.isExhausted ? 0 : 1;
        return !mOpening.isExhausted;
    }
    void NoteDelivery(uint64_t end, uint64_t bytes) const {
        mOpening.bytes += bytes;
        if (mOpening.furthest < end) mOpening.furthest = end;
    }
    void NoteServed(uint64_t bytes) {
        NoteDelivery(mPosition, bytes);
        mOpening.served += bytes;
    }
    void NotePassed(const CountedBytes& taken) {
        mOpening.reads += taken.reads;
        NoteServed(static_cast<uint64_t>(taken.next - taken.begin) - taken.skipped);
    }
    Result ReadSource(uint8_t* buffer, uint32_t n) {
        const ssize_t got = mSource->readAt(static_cast<off64_t>(mPosition), buffer, n);
        if (got > 0) mPosition += static_cast<uint64_t>(got);
        if (mOpening.isOn && got > 0) NoteDelivery(mPosition, static_cast<uint64_t>(got));
        if (got == static_cast<ssize_t>(n)) return kOk;
        NoteFailure();
        return kFailure;
    }
    // The end of a file whose length is known is there to stay; anything else may be answered the next time.
    void NoteFailure() {
        ++mFailedReads;
        if (!mHasKnownLength || LeftInFile() != 0) ++mUnsettledReads;
    }
    Result Refuse() {
        ++mUnsettledReads;
        return kFailure;
    }
    const uint8_t* Held(uint32_t n) {
        const uint8_t* const held = mPieces.Find(mPosition, n);
        return held == nullptr && mWalk == Pieces::Walk::kWhole ? HoldMore(n) : held;
    }
    const uint8_t* HoldMore(uint32_t n);
    void HoldHead(uint64_t end);
    bool HoldPiece(uint32_t size);
    bool MayHold(uint32_t bytes) const;
    void EndWalk(Pieces::Walk outer);
    void FinishOpening();

    bool SearchLevelOne(uint64_t start);
    // What opening has cost so far.
    struct OpeningCost {
        bool isOn = false;
        bool isExhausted = false;
        uint64_t reads = 0;
        uint64_t bytes = 0;
        uint64_t furthest = 0;  // end of the furthest bytes that were delivered
        uint64_t held = 0;      // bytes of pieces
        uint64_t served = 0;    // bytes that reads took of them
    };
    mutable OpeningCost mOpening;
    android::sp<android::DataSource> mSource;
    uint64_t mPosition;
    Pieces mPieces;
    Pieces::Walk mWalk;
    uint64_t mWholeEnd = 0;                    // of the master that is read in pieces
    uint32_t mFirstPiece = 0, mNextPiece = 0;  // how large they may be
    uint64_t mReads = 0;
    uint64_t mFailedReads = 0;
    uint64_t mUnsettledReads = 0;  // that may be answered the next time
    uint64_t mLength;
    bool mHasKnownLength;
    bool mCachesNetwork;
    android::sp<CMatroskaNode> mSegmentNode, mFirstCluster;
    bool mKnowsFirstCluster = false;
    bool mKnowsTracksOfBlocks = false;
    uint32_t mMasterTrack;
    SyncIndex mIndex;
    Array<TrackEntry*> mTracksByNumber;  // ascending; owned by the Segment
    uint32_t mKept[sizeof(limit::kMostKept) / sizeof(limit::kMostKept[0])] = {};  // by Kept
    uint64_t mKeptBytes;
    Array<android::sp<CMatroskaNode>> mSpareNodes;  // for ChildWalk
    Searches<DamageSearch> mDamage;
    Searches<ClusterSearch> mFarClusters;
    Inflater mInflater;
};

inline void BlockRun::NoteReached(size_t count) {
    for (; mReached < count; ++mReached) mTail->File()->CountReads(mHeads[mReached].readsSpared);
}

inline bool BlockHeader::IsDeliverable(const CMatroskaFile& file) const {
    return dataSize <= UINT32_MAX && file.CanDeliver(dataPosition, dataSize);
}

}  // namespace MatroskaExtReader
