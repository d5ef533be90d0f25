// A program with decoders at work on one track, in a process of its own.
//
// So no other command loads libavcodec and the libraries behind it, a decoder that crashes takes its track
// with it and not the command, and no program holds both a GPL build of these libraries and what may not be
// passed on with it. Calls wait for the answer. One thread.
#pragma once
#include <sys/types.h>
#include <string>

#include "decode/Protocol.h"

namespace mkvx {

class DecoderProcess {
  public:
    // `name` is that of the program, which lies beside mkvx. Throws FileFailure when it cannot be started.
    DecoderProcess(const std::string& name, const TrackSetup& setup);
    // Ends the program; an output that was not closed is gone.
    ~DecoderProcess();
    DecoderProcess(const DecoderProcess&) = delete;
    DecoderProcess& operator=(const DecoderProcess&) = delete;

    // What the last call changed. An end that nobody asked for is a problem like any other.
    const TrackState& state() const { return mState; }

    // All throw std::runtime_error with the sentence of a failure that ends the command.
    void feed(const UnitHead& unit, const void* data, size_t size);
    void end(bool givesOutRest);
    void closeOutput();

  private:
    explicit DecoderProcess(const std::string& name);  // with nothing said yet
    void ask(MessageKind kind, const Bytes& body, const void* tail = nullptr, size_t tailSize = 0);
    void takeAnswer(const Message& answer);
    void noteEnd();
    std::string waitForEnd();

    const std::string mName;
    pid_t mPid = -1;
    int mFd = -1;
    TrackState mState;
};

}  // namespace mkvx
