// What mkvx says to mkvx-decode and mkvx-decode-aac, the programs with the decoders in them, and what these
// answer.
//
// A conversation is about one track. mkvx begins with Track, goes on with Unit as often as it likes, then
// End, then Close; each is answered, before the next one, with an Answer or a Failure. The end of the stream
// ends the program; an output that was not closed by then is removed.
//
// A message is its kind in one byte, the size of its body in four, and the body. Numbers are little-endian;
// texts and records are their size in four bytes and their bytes.
//
//   'T' Track    what the decoder is told before the first unit, and where frames go (TrackSetup, in its
//   order) 'U' Unit     time in microseconds (8 bytes), sync flag (1), and to the end of the body the unit's
//   bytes 'E' End      1 when the decoder is to give out the frames that it still holds, else 0 'C' Close
//   completes the output 'A' Answer   how far the track has come (TrackState, in its order) 'F' Failure  a
//   sentence: the command is over
//
// Both sides take what the other one says for input like any other: what does not fit throws ProtocolError.
#pragma once
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace mkvx {

using Bytes = std::vector<uint8_t>;

class ProtocolError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

enum class MessageKind : uint8_t {
    kTrack = 'T',
    kUnit = 'U',
    kEnd = 'E',
    kClose = 'C',
    kAnswer = 'A',
    kFailure = 'F',
};

struct Message {
    MessageKind kind = MessageKind::kFailure;
    Bytes body;
};

// Of a track's MetaData all that a decoder is set up from; what it does not hold is 0 or empty.
struct TrackSetup {
    std::string mime;
    int32_t width = 0, height = 0;
    int32_t sampleRate = 0, channels = 0;
    int32_t bitsPerSample = 0;
    Bytes esds, avcc, hvcc, mpeg4Headers, vorbisInfo, vorbisBooks;
    uint64_t mostFrames = 0;  // what comes after them is not counted
    std::string picturePath;  // PNG of the first picture at or after pictureTimeUs; empty: none
    int64_t pictureTimeUs = 0;
    std::string soundPath;  // WAV; empty: none
};

struct TrackState {
    std::string decoder;     // its name; empty when none could be opened
    uint64_t frames = 0;     // pictures, or blocks of samples
    uint64_t samples = 0;    // per channel; 0 for video
    uint64_t errors = 0;     // units with which something was wrong
    std::string sha1;        // over all frames; after End only
    std::string problem;     // what was wrong first, or why there is no decoder; empty when all is well
    bool isOver = false;     // the problem ends the track: no more units are taken
    bool hasOutput = false;  // there is something that Close would write
};

Bytes toBytes(const TrackSetup& setup);
Bytes toBytes(const TrackState& state);
TrackSetup setupOf(const Bytes& body);
TrackState stateOf(const Bytes& body);

struct UnitHead {
    static constexpr size_t kSize = 9;
    int64_t timeUs = 0;
    bool isSync = false;
};
Bytes toBytes(const UnitHead& head);
UnitHead unitHeadOf(const Bytes& body);

// `tail` follows the body and belongs to it. False when nobody reads any more. Throws ProtocolError for more
// than four bytes can count.
bool writeMessage(int fd, MessageKind kind, const Bytes& body, const void* tail = nullptr,
                  size_t tailSize = 0);
// False at the end of the stream, in front of a message. Memory grows with what arrives, not with what is
// announced.
bool readMessage(int fd, Message& message);

}  // namespace mkvx
