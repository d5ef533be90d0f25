#include "decode/Protocol.h"

#include <sys/socket.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <limits>

namespace mkvx {
namespace {

class Writer {
  public:
    explicit Writer(Bytes& out) : mOut(out) {}

    void operator()(bool value) { number(value ? 1 : 0, 1); }
    void operator()(int32_t value) { number(uint32_t(value), 4); }
    void operator()(int64_t value) { number(uint64_t(value), 8); }
    void operator()(uint64_t value) { number(value, 8); }
    void operator()(const std::string& text) { range(text.data(), text.size()); }
    void operator()(const Bytes& bytes) { range(bytes.data(), bytes.size()); }
    void number(uint64_t value, unsigned size) {
        for (unsigned i = 0; i < size; ++i) mOut.push_back(uint8_t(value >> (8 * i)));
    }

  private:
    void range(const void* data, size_t size) {
        number(size, 4);
        const auto* bytes = static_cast<const uint8_t*>(data);
        mOut.insert(mOut.end(), bytes, bytes + size);
    }

    Bytes& mOut;
};

class Reader {
  public:
    explicit Reader(const Bytes& bytes) : mAt(bytes.data()), mEnd(bytes.data() + bytes.size()) {}

    void operator()(bool& value) { value = number(1) != 0; }
    void operator()(int32_t& value) { value = int32_t(number(4)); }
    void operator()(int64_t& value) { value = int64_t(number(8)); }
    void operator()(uint64_t& value) { value = number(8); }
    void operator()(std::string& text) {
        const size_t size = number(4);
        const uint8_t* data = take(size);
        text.assign(data, data + size);
    }
    void operator()(Bytes& bytes) {
        const size_t size = number(4);
        const uint8_t* data = take(size);
        bytes.assign(data, data + size);
    }
    void expectEnd() const {
        if (mAt != mEnd) throw ProtocolError("a message is longer than what it says");
    }

  private:
    const uint8_t* take(size_t size) {
        if (size > size_t(mEnd - mAt)) throw ProtocolError("a message ends within a value");
        const uint8_t* data = mAt;
        mAt += size;
        return data;
    }
    uint64_t number(unsigned size) {
        const uint8_t* data = take(size);
        uint64_t value = 0;
        for (unsigned i = 0; i < size; ++i) value |= uint64_t(data[i]) << (8 * i);
        return value;
    }

    const uint8_t* mAt;
    const uint8_t* mEnd;
};

// The order of the members in a message, for both directions.
template <typename Setup, typename Each>
void eachMember(Setup& setup, Each& each, const TrackSetup*) {
    each(setup.mime);
    each(setup.width);
    each(setup.height);
    each(setup.sampleRate);
    each(setup.channels);
    each(setup.bitsPerSample);
    each(setup.esds);
    each(setup.avcc);
    each(setup.hvcc);
    each(setup.mpeg4Headers);
    each(setup.vorbisInfo);
    each(setup.vorbisBooks);
    each(setup.mostFrames);
    each(setup.picturePath);
    each(setup.pictureTimeUs);
    each(setup.soundPath);
}

template <typename State, typename Each>
void eachMember(State& state, Each& each, const TrackState*) {
    each(state.decoder);
    each(state.frames);
    each(state.samples);
    each(state.errors);
    each(state.sha1);
    each(state.problem);
    each(state.isOver);
    each(state.hasOutput);
}

template <typename Body>
Bytes written(const Body& body) {
    Bytes bytes;
    Writer writer(bytes);
    eachMember(body, writer, static_cast<const Body*>(nullptr));
    return bytes;
}

template <typename Body>
Body read(const Bytes& bytes) {
    Body body;
    Reader reader(bytes);
    eachMember(body, reader, static_cast<const Body*>(nullptr));
    reader.expectEnd();
    return body;
}

// No signal where nobody reads any more, which only a socket can be asked for.
ssize_t writeSome(int fd, const void* data, size_t size) {
    const ssize_t n = ::send(fd, data, size, MSG_NOSIGNAL);
    return n < 0 && errno == ENOTSOCK ? ::write(fd, data, size) : n;
}

bool writeAll(int fd, const void* data, size_t size) {
    const auto* bytes = static_cast<const uint8_t*>(data);
    while (size > 0) {
        const ssize_t n = writeSome(fd, bytes, size);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        bytes += n;
        size -= size_t(n);
    }
    return true;
}

// Appends at most `size` bytes; how many there were before the end of the stream.
size_t readAll(int fd, Bytes& to, size_t size) {
    constexpr size_t kStep = 1 << 20;
    size_t got = 0;
    while (got < size) {
        const size_t step = std::min(size - got, kStep), before = to.size();
        to.resize(before + step);
        const ssize_t n = ::read(fd, to.data() + before, step);
        to.resize(before + size_t(std::max<ssize_t>(n, 0)));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        got += size_t(n);
    }
    return got;
}

}  // namespace

Bytes toBytes(const TrackSetup& setup) {
    return written(setup);
}
Bytes toBytes(const TrackState& state) {
    return written(state);
}
TrackSetup setupOf(const Bytes& body) {
    return read<TrackSetup>(body);
}
TrackState stateOf(const Bytes& body) {
    return read<TrackState>(body);
}

Bytes toBytes(const UnitHead& head) {
    Bytes bytes;
    Writer writer(bytes);
    writer(head.timeUs);
    writer(head.isSync);
    return bytes;
}

UnitHead unitHeadOf(const Bytes& body) {
    UnitHead head;
    Reader reader(body);
    reader(head.timeUs);
    reader(head.isSync);
    return head;
}

bool writeMessage(int fd, MessageKind kind, const Bytes& body, const void* tail, size_t tailSize) {
    const size_t size = body.size() + tailSize;
    if (size > std::numeric_limits<uint32_t>::max())
        throw ProtocolError("a unit is too large for the decoder");
    Bytes head = {uint8_t(kind)};
    Writer(head).number(size, 4);
    head.insert(head.end(), body.begin(), body.end());
    return writeAll(fd, head.data(), head.size()) && writeAll(fd, tail, tailSize);
}

bool readMessage(int fd, Message& message) {
    Bytes head;
    const size_t got = readAll(fd, head, 5);
    if (got == 0) return false;
    if (got < 5) throw ProtocolError("the stream ends within a message");
    message.kind = MessageKind(head[0]);
    const size_t size =
        size_t(head[1]) | size_t(head[2]) << 8 | size_t(head[3]) << 16 | size_t(head[4]) << 24;
    message.body.clear();
    if (readAll(fd, message.body, size) < size) throw ProtocolError("the stream ends within a message");
    return true;
}

}  // namespace mkvx
