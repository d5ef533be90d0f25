"""Video codecs, each under every name that leads to a decoder, and what cannot work and why."""
import struct

import pytest
from streams import Case, bitmap_header, merged, muxed, picture, rewritten

VFW = 'V_MS/VFW/FOURCC'
H264 = '-c:v libx264 -preset veryfast -bf 2 -g 10 -pix_fmt yuv420p'
HEVC = '-c:v libx265 -preset ultrafast -x265-params log-level=error:keyint=10:pools=1:repeat-headers=1 -pix_fmt yuv420p'
MPEG4 = '-c:v mpeg4 -bf 2 -g 10'
MPEG4_GLOBAL = '-c:v mpeg4 -flags +global_header -g 10'


def nal_lengths(data, size):
    """The NAL units of a frame with 4-byte lengths, rewritten by size(unit)."""
    out, at = b'', 0
    while at < len(data):
        end = at + 4 + struct.unpack_from('>I', data, at)[0]
        out += size(data[at + 4:end])
        at = end
    return out


def start_codes(_, packet):
    return nal_lengths(packet.data, lambda unit: b'\0\0\0\1' + unit)


def two_byte_lengths(_, packet):
    return nal_lengths(packet.data, lambda unit: struct.pack('>H', len(unit)) + unit)


def with_headers(private, packet):
    return private + packet.data if packet.key else packet.data


def as_vfw(fourcc, extra=True):
    return lambda private: picture(VFW, bitmap_header(fourcc, private if extra else b''))


def from_avi(encoder, tag, mime, *rest):
    return Case('%s as %s' % (encoder, tag), VFW, mime, merged('-c:v %s -g 10 -vtag %s' % (encoder, tag), 'avi'), *rest)


WITHOUT_PRIVATE = rewritten(MPEG4_GLOBAL, lambda private: picture('V_MPEG4/ISO/ASP'), with_headers)
TWO_BYTES = rewritten(H264, lambda p: picture('V_MPEG4/ISO/AVC', p[:4] + b'\xfd' + p[5:]), two_byte_lengths)

CASES = [
    Case('H.264', 'V_MPEG4/ISO/AVC', 'video/avc', muxed(H264)),
    Case('H.264, zlib', 'V_MPEG4/ISO/AVC', 'video/avc', merged(H264, 'mp4', '--compression', '0:zlib')),
    Case('H.264 with start codes', VFW, 'video/avc',
         rewritten(H264 + ' -x264-params repeat-headers=1', as_vfw('H264', False), start_codes)),
    Case('H.264 with start codes', 'V_MPEG4/ISO/AVC', 'video/avc',
         rewritten(H264, lambda private: picture('V_MPEG4/ISO/AVC', private), start_codes, reference=True)),
    Case('H.264, 2-byte lengths', 'V_MPEG4/ISO/AVC', 'video/avc', TWO_BYTES, 'undecodable',
         'the source takes every NAL length to have 4 bytes'),
    Case('HEVC', 'V_MPEGH/ISO/HEVC', 'video/hevc', muxed(HEVC)),
    Case('HEVC with start codes', VFW, 'video/hevc',
         rewritten(HEVC, as_vfw('HEVC', False), start_codes, reference=True)),
    Case('MPEG-4 part 2', 'V_MPEG4/ISO/ASP', 'video/mp4v-es', muxed(MPEG4)),
    Case('MPEG-4, no CodecPrivate', 'V_MPEG4/ISO/ASP', 'video/mp4v-es', WITHOUT_PRIVATE),
    from_avi('mpeg4', 'XVID', 'video/mp4v-es'),
    from_avi('mpeg4', 'DIVX', 'video/mp4v-es'),
    from_avi('mpeg4', 'FMP4', 'video/mp4v-es'),
    from_avi('mpeg4', 'DX50', 'video/ffmpeg'),
    Case('MPEG-4, headers in the bitmap header', VFW, 'video/mp4v-es', rewritten(MPEG4_GLOBAL, as_vfw('XVID'))),
    Case('MPEG-1', 'V_MPEG1', 'video/mpeg1', muxed('-c:v mpeg1video -bf 2 -g 10')),
    Case('MPEG-1, by mkvmerge', 'V_MPEG1', 'video/mpeg1', merged('-c:v mpeg1video -bf 2 -g 10', 'm1v')),
    Case('MPEG-1 as MPEG', VFW, 'video/mpeg1', rewritten('-c:v mpeg1video -g 10', as_vfw('MPEG'))),
    Case('MPEG-2', 'V_MPEG2', 'video/mpeg2', muxed('-c:v mpeg2video -bf 2 -g 10')),
    Case('MPEG-2, by mkvmerge', 'V_MPEG2', 'video/mpeg2', merged('-c:v mpeg2video -bf 2 -g 10', 'm2v')),
    Case('VP9', 'V_VP9', 'video/x-vnd.on2.vp9', muxed('-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -g 10')),
    Case('VP8 as VP-8', VFW, 'video/x-vnd.on2.vp8',
         rewritten('-c:v libvpx -deadline realtime -cpu-used 8 -g 10', as_vfw('VP-8'), reference=True)),
    Case('H.263', VFW, 'video/3gpp', muxed('-c:v h263 -g 10')),
    Case('FLV1', VFW, 'video/mixer', muxed('-c:v flv -g 10')),
    Case('WMV1', VFW, 'video/mixer', muxed('-c:v wmv1 -g 10')),
    Case('WMV2', VFW, 'video/mixer', muxed('-c:v wmv2 -g 10')),
    Case('MP42', VFW, 'video/mixer', muxed('-c:v msmpeg4v2 -g 10')),
    from_avi('msmpeg4', 'MP43', 'video/mixer'),
    from_avi('msmpeg4', 'DIV3', 'video/mixer'),
    from_avi('msmpeg4', 'DIV4', 'video/mp4v-es'),
    from_avi('msmpeg4v2', 'DIV2', 'video/mp4v-es', 'undecodable',
             'all but the end of its first frame is taken for MPEG-4 headers'),
    Case('MS MPEG-4 v3', 'V_MPEG4/MS/V3', 'video/mp4v-es', muxed('-c:v msmpeg4 -g 10'), 'undecodable',
         'offered as MPEG-4 part 2, without a word that it is not'),
    Case('RealVideo 1', 'V_REAL/RV10', 'video/mixer', merged('-c:v rv10 -g 10', 'rm')),
    Case('RealVideo 2', 'V_REAL/RV20', 'video/mixer', merged('-c:v rv20 -g 10', 'rm')),
] + [Case(name, codec_id, '', muxed(options), 'dropped', 'no MIME type for the CodecID')
     for name, codec_id, options in [
         ('VP8', 'V_VP8', '-c:v libvpx -deadline realtime -cpu-used 8 -g 10'),
         ('MJPEG', 'V_MJPEG', '-c:v mjpeg -pix_fmt yuvj420p'),
         ('Theora', 'V_THEORA', '-c:v libtheora'),
         ('AV1', 'V_AV1', '-c:v libaom-av1 -cpu-used 8 -usage realtime -frames:v 3'),
     ]]


@pytest.mark.parametrize('case', CASES, ids=lambda case: '%s in %s' % (case.name, case.codec_id))
def test_video(judge, case):
    judge(case)
