#include "codecs/VorbisSetup.h"

#include <ogg/ogg.h>
#include <vorbis/codec.h>
#include <string>

namespace mkvx {
namespace {

// The MetaData does not carry the file's comments, and a decoder takes nothing from them.
Bytes noComments() {
    const std::string head = "\3vorbis";
    Bytes header(head.begin(), head.end());
    header.insert(header.end(), 4 + 4, 0);  // no vendor, no comments
    header.push_back(1);                    // framing bit
    return header;
}

class Setup {
  public:
    Setup() {
        vorbis_info_init(&mInfo);
        vorbis_comment_init(&mComment);
    }
    ~Setup() {
        vorbis_comment_clear(&mComment);
        vorbis_info_clear(&mInfo);
    }
    Setup(const Setup&) = delete;
    Setup& operator=(const Setup&) = delete;

    bool take(Bytes header) {
        ogg_packet packet = {};
        packet.packet = header.data();
        packet.bytes = long(header.size());
        packet.b_o_s = mTaken == 0;
        packet.packetno = mTaken++;
        return vorbis_synthesis_headerin(&mInfo, &mComment, &packet) == 0;
    }
    bool begins() {
        vorbis_dsp_state decoder;
        const bool isInitialised = vorbis_synthesis_init(&decoder, &mInfo) == 0;
        vorbis_dsp_clear(&decoder);
        return isInitialised;
    }

  private:
    vorbis_info mInfo;
    vorbis_comment mComment;
    ogg_int64_t mTaken = 0;
};

}  // namespace

bool isVorbisSetupUsable(const Bytes& identification, const Bytes& setup) {
    Setup decoder;
    return decoder.take(identification) && decoder.take(noComments()) && decoder.take(setup) &&
           decoder.begins();
}

}  // namespace mkvx
