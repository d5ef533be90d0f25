#include "decode/DecoderProcess.h"

#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>

#include "base/Failure.h"
#include "base/ProgramFolder.h"

namespace mkvx {
namespace {

// Interruptions are decided here: the program does not see them and ends with the stream.
class SpawnAttributes {
  public:
    SpawnAttributes() {
        ::posix_spawnattr_init(&mAttributes);
        sigset_t blocked;
        ::sigemptyset(&blocked);
        ::sigaddset(&blocked, SIGINT);
        ::sigaddset(&blocked, SIGTERM);
        ::posix_spawnattr_setsigmask(&mAttributes, &blocked);
        ::posix_spawnattr_setflags(&mAttributes, POSIX_SPAWN_SETSIGMASK);
    }
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&mAttributes); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    const posix_spawnattr_t* get() const { return &mAttributes; }

  private:
    posix_spawnattr_t mAttributes;
};

// Standard input and output are one end of the conversation.
class SpawnActions {
  public:
    explicit SpawnActions(int end) {
        ::posix_spawn_file_actions_init(&mActions);
        ::posix_spawn_file_actions_adddup2(&mActions, end, STDIN_FILENO);
        ::posix_spawn_file_actions_adddup2(&mActions, end, STDOUT_FILENO);
    }
    ~SpawnActions() { ::posix_spawn_file_actions_destroy(&mActions); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;
    const posix_spawn_file_actions_t* get() const { return &mActions; }

  private:
    posix_spawn_file_actions_t mActions;
};

}  // namespace

DecoderProcess::DecoderProcess(const std::string& name) : mName(name) {
    const std::string program = besideProgram(name, name);
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw FileFailure(program, std::string("cannot be started: ") + std::strerror(errno));
    mFd = ends[0];
    const char* arguments[] = {mName.c_str(), nullptr};
    const int error = ::posix_spawn(&mPid, program.c_str(), SpawnActions(ends[1]).get(),
                                    SpawnAttributes().get(), const_cast<char* const*>(arguments), environ);
    ::close(ends[1]);
    if (error != 0) {
        ::close(mFd);
        throw FileFailure(program, std::string("cannot be started: ") + std::strerror(error));
    }
}

DecoderProcess::DecoderProcess(const std::string& name, const TrackSetup& setup) : DecoderProcess(name) {
    ask(MessageKind::kTrack, toBytes(setup));
}

DecoderProcess::~DecoderProcess() {
    (void)waitForEnd();
}

void DecoderProcess::feed(const UnitHead& unit, const void* data, size_t size) {
    ask(MessageKind::kUnit, toBytes(unit), data, size);
}

void DecoderProcess::end(bool givesOutRest) {
    ask(MessageKind::kEnd, {uint8_t(givesOutRest ? 1 : 0)});
}

void DecoderProcess::closeOutput() {
    ask(MessageKind::kClose, {});
    if (mFd < 0) throw std::runtime_error(mState.problem);
}

void DecoderProcess::ask(MessageKind kind, const Bytes& body, const void* tail, size_t tailSize) {
    if (mFd < 0) return;
    Message answer;
    if (!writeMessage(mFd, kind, body, tail, tailSize) || !readMessage(mFd, answer)) return noteEnd();
    takeAnswer(answer);
}

void DecoderProcess::takeAnswer(const Message& answer) {
    if (answer.kind == MessageKind::kFailure)
        throw std::runtime_error(std::string(answer.body.begin(), answer.body.end()));
    if (answer.kind != MessageKind::kAnswer) throw ProtocolError(mName + ": answers with something else");
    mState = stateOf(answer.body);
}

void DecoderProcess::noteEnd() {
    mState.problem = mName + " ended early: " + waitForEnd();
    mState.isOver = true;
    mState.hasOutput = false;
}

// Says how the program ended.
std::string DecoderProcess::waitForEnd() {
    if (mFd >= 0) ::close(mFd);
    mFd = -1;
    int status = 0;
    while (mPid > 0 && ::waitpid(mPid, &status, 0) < 0 && errno == EINTR) {
    }
    mPid = -1;
    if (WIFSIGNALED(status))
        return "signal " + std::to_string(WTERMSIG(status)) + " (" + ::strsignal(WTERMSIG(status)) + ")";
    return "exit code " + std::to_string(WEXITSTATUS(status));
}

}  // namespace mkvx
