// The other end of a conversation (Protocol.h): what the programs with decoders in them have in common.
#pragma once
#include <functional>
#include <memory>

#include "decode/Protocol.h"

namespace mkvx {

// One track in the hands of a decoder. What it throws is a failure that ends the command.
class ServedTrack {
  public:
    virtual ~ServedTrack() = default;
    virtual void feed(const UnitHead& unit, const uint8_t* data, size_t size) = 0;
    virtual void end(bool givesOutRest) = 0;
    virtual void closeOutput() = 0;
    virtual const TrackState& state() = 0;
};

// Reads messages from standard input, answers on standard output, and returns the exit code of the program of
// that name. `begin` makes the one track.
int serveTrack(const char* program,
               const std::function<std::unique_ptr<ServedTrack>(const TrackSetup&)>& begin);

}  // namespace mkvx
