#include "decode/Serve.h"

#include <unistd.h>
#include <cstdio>

#include "base/Failure.h"

namespace mkvx {
namespace {

using Begin = std::function<std::unique_ptr<ServedTrack>(const TrackSetup&)>;

class Conversation {
  public:
    explicit Conversation(const Begin& begin) : mBegin(begin) {}

    void run() {
        for (Message message; readMessage(STDIN_FILENO, message);) {
            obey(message);
            if (!writeMessage(STDOUT_FILENO, MessageKind::kAnswer, toBytes(mTrack->state()))) return;
        }
    }

  private:
    void obey(const Message& message) {
        if ((message.kind == MessageKind::kTrack) == (mTrack != nullptr))
            throw ProtocolError("one Track has to come first");
        switch (message.kind) {
            case MessageKind::kTrack:
                mTrack = mBegin(setupOf(message.body));
                return;
            case MessageKind::kUnit:
                return feed(message.body);
            case MessageKind::kEnd:
                return end(message.body);
            case MessageKind::kClose:
                mTrack->closeOutput();
                return;
            default:
                throw ProtocolError("a message of no known kind");
        }
    }

    void feed(const Bytes& body) {
        const UnitHead unit = unitHeadOf(body);
        mTrack->feed(unit, body.data() + UnitHead::kSize, body.size() - UnitHead::kSize);
    }

    void end(const Bytes& body) {
        if (body.size() != 1) throw ProtocolError("an End that says something else");
        mTrack->end(body[0] != 0);
    }

    const Begin& mBegin;
    std::unique_ptr<ServedTrack> mTrack;
};

}  // namespace

int serveTrack(const char* program, const Begin& begin) {
    if (::isatty(STDIN_FILENO) != 0) {
        std::fprintf(stderr, "%s: is a part of mkvx, started by mkvx decode\n", program);
        return kExitWrongUsage;
    }
    try {
        Conversation(begin).run();
        return kExitDone;
    } catch (const ProtocolError& error) {
        std::fprintf(stderr, "%s: not what mkvx decode says: %s\n", program, error.what());
        return kExitWrongUsage;
    } catch (const std::exception& error) {
        const std::string sentence = error.what();
        (void)writeMessage(STDOUT_FILENO, MessageKind::kFailure, Bytes(sentence.begin(), sentence.end()));
        return kExitFileUnusable;
    }
}

}  // namespace mkvx
