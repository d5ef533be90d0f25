"""Every codec under every name that leads to a decoder: its units as the rules want them; decoded from nothing but what the
plug-in hands out, to the last bit as ffmpeg decodes the file; and extracted into a file that opens elsewhere without a
complaint. And what cannot work, and why."""
import struct
from dataclasses import dataclass

import ebml
import ffmpeg
import heaac
import pytest
import rules
from muxing import Packet, bitmap_header, picture, sound, wave_format

VFW, ACM = 'V_MS/VFW/FOURCC', 'A_MS/ACM'


@dataclass
class Case:
    """`make`: make(Muxer, stream) -> (path, path that ffmpeg shall decode). `claim`: one of the check_... below, with the
    reason for any other than the first. `extracted`: what ffmpeg finds in the extracted file, '' where it is not tried."""
    stream: str
    codec_id: str
    mime: str
    make: object
    extracted: str = ''
    claim: str = 'decoded'
    why: str = ''


def by_ffmpeg(mux, stream):
    path = mux.ffmpeg('f-%s.mkv' % stream, [stream])
    return path, path


def by_mkvmerge(*options):
    def make(mux, stream):
        path = mux.mkvmerge('m-%s.mkv' % stream, [stream], *options)
        return path, path
    return make


def rewritten(describe, change=None, reference=False):
    """A track entry of our own around the stream's packets. describe(private bytes) -> TrackEntry; change(private, packet)
    -> bytes. `reference`: ffmpeg judges the file that it muxed itself, since it reads ours in its own way."""
    def make(mux, stream):
        track, packets = mux.packets(stream)
        if change:
            packets = [Packet(p.ms, p.key, change(track.private, p)) for p in packets]
        path = mux.write('rewritten-%d.mkv' % id(make), describe(track.private), packets)
        return path, mux.path('packets-%s.mkv' % stream) if reference else path
    return make


def high_efficiency_aac(describe):
    """describe(AudioSpecificConfig) -> TrackEntry; ffmpeg judges the file whose configuration is whole."""
    def make(mux, _):
        config, units = heaac.encode(seconds=1.2)
        packets = [Packet(i * heaac.FRAME * 1000 // heaac.RATE, True, unit) for i, unit in enumerate(units)]
        return mux.write('he-aac.mkv', describe(config), packets), \
            mux.write('he-aac-whole.mkv', sound('A_AAC', config, channels=2), packets)
    return make


def named(codec_id, with_private=False):
    make = picture if codec_id[0] == 'V' else sound
    return lambda private: make(codec_id, private if with_private else b'')


def in_wave(tag, channels=1, align=1, bits=16):
    """The codec's own configuration goes behind the wave format."""
    return lambda private: sound(ACM, wave_format(tag, channels, align=align, bits=bits, extra=private), channels=channels, bits=bits)


def in_bitmap(fourcc, extra=True):
    return lambda private: picture(VFW, bitmap_header(fourcc, private if extra else b''))


def padded_flac(size):
    """A configuration of `size` bytes: a padding block behind the stream description."""
    def describe(private):
        rest = size - len(private) - 4
        return sound('A_FLAC', private[:4] + b'\0' + private[5:] + b'\x81' + rest.to_bytes(3, 'big') + bytes(rest))
    return describe


def nal_units(data, rewrite):
    """The NAL units of a frame with 4-byte lengths, rewritten by rewrite(unit)."""
    out, at = b'', 0
    while at < len(data):
        end = at + 4 + struct.unpack_from('>I', data, at)[0]
        out += rewrite(data[at + 4:end])
        at = end
    return out


def start_codes(_, packet):
    return nal_units(packet.data, lambda unit: b'\0\0\0\1' + unit)


def two_byte_lengths(_, packet):
    return nal_units(packet.data, lambda unit: struct.pack('>H', len(unit)) + unit)


def with_headers(private, packet):
    return private + packet.data if packet.key else packet.data


LACED = by_mkvmerge('--engage', 'lacing_xiph')
BITMAP_MPEG4 = [(tag, VFW, 'video/mp4v-es', by_mkvmerge(), 'mpeg4') for tag in ('XVID', 'DIVX', 'FMP4')]
MIXED = [(name, VFW, 'video/mixer', by_ffmpeg) for name in ('flv1', 'wmv1', 'wmv2', 'msmpeg4v2')]
NO_SIZE = 'no key tells the sample size, 16 bits are taken'
NO_NAME = 'no MIME type for the CodecID'
DROPPED = [('vp8', 'V_VP8'), ('mjpeg', 'V_MJPEG'), ('theora', 'V_THEORA'), ('av1', 'V_AV1'), ('opus', 'A_OPUS'), ('eac3', 'A_EAC3'),
           ('alac', 'A_ALAC'), ('wavpack', 'A_WAVPACK4'), ('tta', 'A_TTA1'), ('pcm_f32le', 'A_PCM/FLOAT/IEEE')]

CASES = [Case(*row) for row in [
    ('h264', 'V_MPEG4/ISO/AVC', 'video/avc', by_ffmpeg, 'h264'),
    ('h264', 'V_MPEG4/ISO/AVC', 'video/avc', by_mkvmerge('--compression', '0:zlib')),
    ('h264_headers_repeated', VFW, 'video/avc', rewritten(in_bitmap('H264', False), start_codes)),
    ('h264', 'V_MPEG4/ISO/AVC', 'video/avc', rewritten(named('V_MPEG4/ISO/AVC', True), start_codes, reference=True)),
    ('h264', 'V_MPEG4/ISO/AVC', 'video/avc',
     rewritten(lambda p: picture('V_MPEG4/ISO/AVC', p[:4] + b'\xfd' + p[5:]), two_byte_lengths), '', 'undecodable',
     'the source takes every NAL length to have 4 bytes'),
    ('hevc', 'V_MPEGH/ISO/HEVC', 'video/hevc', by_ffmpeg, 'hevc'),
    ('hevc_headers_repeated', VFW, 'video/hevc', rewritten(in_bitmap('HEVC', False), start_codes, reference=True)),
    ('mpeg4', 'V_MPEG4/ISO/ASP', 'video/mp4v-es', by_ffmpeg, 'mpeg4'),
    ('mpeg4_headers_aside', 'V_MPEG4/ISO/ASP', 'video/mp4v-es', rewritten(named('V_MPEG4/ISO/ASP'), with_headers)),
    *BITMAP_MPEG4,
    ('DX50', VFW, 'video/ffmpeg', by_mkvmerge()),
    ('mpeg4_headers_aside', VFW, 'video/mp4v-es', rewritten(in_bitmap('XVID'))),
    ('mpeg1', 'V_MPEG1', 'video/mpeg1', by_ffmpeg, 'mpeg1video'),
    ('mpeg1_bare', 'V_MPEG1', 'video/mpeg1', by_mkvmerge()),
    ('mpeg1', VFW, 'video/mpeg1', rewritten(in_bitmap('MPEG'))),
    ('mpeg2', 'V_MPEG2', 'video/mpeg2', by_ffmpeg, 'mpeg2video'),
    ('mpeg2_bare', 'V_MPEG2', 'video/mpeg2', by_mkvmerge()),
    ('vp9', 'V_VP9', 'video/x-vnd.on2.vp9', by_ffmpeg, 'vp9'),
    ('vp8', VFW, 'video/x-vnd.on2.vp8', rewritten(in_bitmap('VP-8'), reference=True)),
    ('h263', VFW, 'video/3gpp', by_ffmpeg),
    *MIXED,
    ('MP43', VFW, 'video/mixer', by_mkvmerge()),
    ('DIV3', VFW, 'video/mixer', by_mkvmerge()),
    ('DIV4', VFW, 'video/mp4v-es', by_mkvmerge()),
    ('DIV2', VFW, 'video/mp4v-es', by_mkvmerge(), '', 'undecodable', 'all but the end of its first frame is taken for MPEG-4 headers'),
    ('msmpeg4', 'V_MPEG4/MS/V3', 'video/mp4v-es', by_ffmpeg, '', 'undecodable', 'offered as MPEG-4 part 2, without a word that it is not'),
    ('rv10', 'V_REAL/RV10', 'video/mixer', by_mkvmerge()),
    ('rv20', 'V_REAL/RV20', 'video/mixer', by_mkvmerge()),

    ('aac', 'A_AAC', 'audio/mp4a-latm', by_ffmpeg, 'aac'),
    ('aac', 'A_AAC', 'audio/mp4a-latm', LACED, 'aac'),
    ('aac_stereo', 'A_AAC', 'audio/mp4a-latm', by_ffmpeg),
    ('aac', 'A_AAC/MPEG4/LC', 'audio/mp4a-latm', rewritten(named('A_AAC/MPEG4/LC'))),
    ('aac', 'A_AAC/MPEG2/LC', 'audio/mp4a-latm', rewritten(named('A_AAC/MPEG2/LC'))),
    ('aac', 'A_AAC', '', rewritten(named('A_AAC'), reference=True), '', 'dropped', 'the CodecID names no profile'),
    ('aac', 'A_AAC/MPEG4/MAIN', '', rewritten(named('A_AAC/MPEG4/MAIN'), reference=True), '', 'dropped',
     'no configuration is made for this profile'),
    ('aac', ACM, 'audio/mp4a-latm', rewritten(in_wave(0xFF))),
    ('he_aac', 'A_AAC', 'audio/mp4a-latm', high_efficiency_aac(lambda config: sound('A_AAC', config, channels=2))),
    ('he_aac', 'A_AAC/MPEG4/LC/SBR', 'audio/mp4a-latm',
     high_efficiency_aac(lambda config: sound('A_AAC/MPEG4/LC/SBR', rate=22050.0, channels=2))),
    ('mp3', 'A_MPEG/L3', 'audio/mpeg', by_ffmpeg, 'mp3'),
    ('mp3', 'A_MPEG/L3', 'audio/mpeg', LACED),
    ('mp3', ACM, 'audio/mpeg', rewritten(in_wave(0x55))),
    ('mp2', 'A_MPEG/L2', 'audio/mpeg', by_ffmpeg, 'mp2'),
    ('mp2', 'A_MPEG/L2', 'audio/mpeg', LACED, 'mp2'),
    ('mp2', ACM, 'audio/mpeg', rewritten(in_wave(0x50))),
    ('ac3', 'A_AC3', 'audio/ac3', by_ffmpeg, 'ac3'),
    ('ac3', 'A_AC3', 'audio/ac3', LACED, 'ac3'),
    ('ac3', ACM, 'audio/ac3', rewritten(in_wave(0x2000))),
    ('dts', 'A_DTS', 'audio/dts', by_ffmpeg, 'dts'),
    ('dts', 'A_DTS', 'audio/dts', LACED),
    ('dts', ACM, 'audio/dts', rewritten(in_wave(0x2001, channels=2))),
    ('flac', 'A_FLAC', 'audio/flac', by_ffmpeg, 'flac'),
    ('flac', 'A_FLAC', 'audio/flac', LACED),
    ('flac', 'A_FLAC', 'audio/flac', rewritten(padded_flac(300))),
    ('flac', 'A_FLAC', 'audio/flac', rewritten(padded_flac(115))),
    ('vorbis', 'A_VORBIS', 'audio/vorbis', by_ffmpeg, 'vorbis'),
    ('vorbis', 'A_VORBIS', 'audio/vorbis', LACED, 'vorbis'),
    ('pcm_s16le_stereo', 'A_PCM/INT/LIT', 'audio/raw', by_ffmpeg, 'pcm_s16le'),
    *[('pcm_%s_stereo' % form, 'A_PCM/INT/LIT', 'audio/raw', by_ffmpeg, 'pcm_' + form, 'altered', NO_SIZE)
      for form in ('u8', 's24le', 's32le')],
    ('pcm_s16le', ACM, 'audio/raw', rewritten(in_wave(1, align=2))),
    ('pcm_s24le', ACM, 'audio/raw', rewritten(in_wave(1, align=3, bits=24))),
    ('pcm_s16be', 'A_PCM/INT/BIG', 'audio/lpcm', by_ffmpeg, 'pcm_s16le'),
    ('pcm_s24be', 'A_PCM/INT/BIG', 'audio/lpcm', by_ffmpeg, 'pcm_s24le'),
    ('pcm_s32be', 'A_PCM/INT/BIG', 'audio/lpcm', by_ffmpeg, 'pcm_s32le'),
    ('pcm_f32le', ACM, 'audio/lpcm', rewritten(in_wave(3, align=4, bits=32)), '', 'altered', 'offered as big-endian integers'),
    ('adpcm_ms', ACM, 'audio/adpcm', by_ffmpeg, 'adpcm_ms'),
    ('adpcm_ms_stereo', ACM, 'audio/adpcm', by_ffmpeg, 'adpcm_ms'),
    ('adpcm_ima_wav', ACM, 'audio/adpcm', by_ffmpeg, 'adpcm_ima_wav'),
    ('adpcm_yamaha', ACM, 'audio/adpcm', by_ffmpeg),
    ('adpcm_swf', ACM, 'audio/adpcm', by_ffmpeg),
    ('pcm_alaw', ACM, 'audio/g711-alaw', by_ffmpeg, 'pcm_alaw'),
    ('pcm_mulaw', ACM, 'audio/g711-mlaw', by_ffmpeg, 'pcm_mulaw'),
    ('wmav2', ACM, 'audio/wma', by_ffmpeg, 'wmav2'),
    ('wmav1', ACM, '', by_ffmpeg, '', 'dropped', 'no MIME type for the format tag'),
    ('ra144', 'A_REAL/14_4', 'audio/realaudio', by_ffmpeg, '', 'refused', 'nothing in the metadata says which RealAudio it is'),
    *[(*names, '', by_ffmpeg, '', 'dropped', NO_NAME) for names in DROPPED],
]]
# Of these, packets come out as they are; those of others lose or get headers, or are cut elsewhere.
KEPT = ('vp9', 'mp3', 'mp2', 'ac3', 'dts', 'flac', 'vorbis')


def check_decoded(t, units, expected):
    """As ffmpeg decodes it, to the last bit, and without a complaint."""
    assert t and (t['errors'], t['units']) == (0, units) and expected.frames > 0
    assert (t['frames'], t.get('samples', 0), t['sha1']) == (expected.frames, expected.samples, expected.sha1)


def check_dropped(t, units, expected):
    """Not offered at all."""
    assert t is None and expected.frames > 0


def check_refused(t, units, expected):
    """Offered, but the metadata leads a decoder nowhere."""
    assert t['decoder'] is None and t['problem']


def check_undecodable(t, units, expected):
    """Offered and fed whole, and no unit makes sense to the decoder that the metadata leads to."""
    assert (t['units'], t['frames'], t['errors']) == (units, 0, units) and expected.frames > 0


def check_altered(t, units, expected):
    """Decoded unit by unit, to something else than what was encoded."""
    assert t['units'] == units and t['frames'] == expected.frames
    assert (t['samples'], t['sha1']) != (expected.samples, expected.sha1)


def check_aac_of_devices(mkvx, path, is_laced, units, expected):
    """The library that devices use takes one frame a unit, no wave format, and no LTP, which SBR without a configuration is
    told as. Else as many samples come as from ffmpeg."""
    t = mkvx('decode', '--format', 'json', path).json()['tracks'][0]
    if ebml.read(path).tracks[0].codec_id in (ACM, 'A_AAC/MPEG4/LC/SBR'):
        return check_refused(t, units, expected)
    findings = {f['code']: f['weight'] for f in mkvx('check', '--format', 'jsonl', path).json()['tracks'][0]['findings']}
    assert findings.get('laced_units') == ('mute' if is_laced else None)
    assert (t['samples'], t['errors']) == ((0, units) if is_laced else (expected.samples, 0))


def name(case):
    return '%s in %s, %s' % (case.stream, case.codec_id, case.make.__qualname__.split('.')[0])


@pytest.mark.parametrize('case', CASES, ids=name)
def test_codec(mkvx, mux, check, case):
    path, reference = case.make(mux, case.stream)
    # The rules know nothing of records that RealMedia has or MPEG-4 would, and ffmpeg reads files of our own in its own way.
    has_rules = case.stream not in ('rv10', 'rv20', 'ra144', 'DIV2') and case.make.__qualname__.startswith('by_')
    doc = check(path) if has_rules else ebml.read(path)
    tracks = mkvx('decode', '--aac', 'ffmpeg', '--format', 'json', path).json()['tracks']
    assert [t.codec_id for t in doc.tracks] == [case.codec_id] and [t['mime'] for t in tracks] == [case.mime] * bool(case.mime)
    # A block of several frames is one unit, except for Vorbis.
    units = sum(len(block.frames) if case.codec_id == 'A_VORBIS' else 1 for block in doc.blocks)
    # "audio/mpeg" is every layer, so the decoder has to be one for every layer.
    decoder = 'mp3float' if case.mime == 'audio/mpeg' else None
    expected = ffmpeg.decode(reference, decoder, is_clean=bool(case.extracted))
    globals()['check_' + case.claim](tracks[0] if tracks else None, units, expected)
    if tracks and case.mime == 'audio/mp4a-latm':
        check_aac_of_devices(mkvx, path, any(len(block.frames) > 1 for block in doc.blocks), units, expected)
    if case.extracted:
        out = mux.path('extracted-%d' % id(case))
        extraction = mkvx('extract', path, '--track', 0, '-o', out)
        assert (extraction.code, extraction.err) == (0, '')
        assert [s['codec_name'] for s in ffmpeg.probe(out, is_clean=True)['streams']] == [case.extracted]
        again = ffmpeg.decode(out, decoder)
        assert (again.samples, again.sha1) == (expected.samples, expected.sha1)
        if case.extracted in KEPT:
            assert [(p.size, p.sha1) for p in ffmpeg.packets(out)[0]] == [(p.size, p.sha1) for p in ffmpeg.packets(path)[0]]


TOGETHER = [
    (['h264', 'aac'], ['V_MPEG4/ISO/AVC', 'A_AAC']),
    (['hevc', 'mp3'], ['V_MPEGH/ISO/HEVC', 'A_MPEG/L3']),
    (['mpeg4', 'ac3'], [VFW, 'A_AC3']),
    (['mpeg2', 'mp2'], ['V_MPEG2', 'A_MPEG/L2']),
    (['mpeg1', 'dts'], ['V_MPEG1', 'A_DTS']),
    (['flac', 'pcm_s16le', 'pcm_s24le'], ['A_FLAC', 'A_PCM/INT/LIT', 'A_PCM/INT/LIT']),
    # What no decoder of the device takes is absent, and the tracks behind it move up.
    (['opus', 'eac3', 'pcm_f32le', 'alac', 'wavpack', 'tta', 'mp3'], ['A_MPEG/L3']),
    (['av1', 'theora', 'mjpeg', 'vp8', 'h264', 'opus', 'aac'], ['V_MPEG4/ISO/AVC', 'A_AAC']),
]


@pytest.mark.parametrize('streams, ids', TOGETHER, ids=lambda value: '+'.join(value) if '/' not in value[0] else '')
def test_tracks_that_are_offered_together(mux, check, streams, ids):
    muxer = mux.ffmpeg if streams[0] in ('opus', 'av1') else mux.mkvmerge
    doc = check(muxer('together-%s.mkv' % '-'.join(streams), streams))
    assert [t.codec_id.replace('V_MPEG4/ISO/ASP', VFW) for t in rules.offered(doc)] == ids


def test_webm(mux, check):
    doc = check(mux.ffmpeg('vp9-vorbis.webm', ['vp9', 'vorbis'], '-f', 'webm'))
    assert doc.doc_type == 'webm' and len(rules.offered(doc)) == 2
    assert not rules.offered(check(mux.ffmpeg('vp8-opus.webm', ['vp8', 'opus'])))


def test_mpeg4_headers_in_the_first_frame_become_configuration(mux, check):
    doc = check(mux.mkvmerge('vfw-xvid.mkv', ['XVID']))
    assert doc.tracks[0].codec_id == VFW and rules.m4v_headers(doc.blocks[0].frames[0]) > 0


def test_h264_with_start_codes_in_a_bitmap_track(mux, check):
    avi = mux.ffmpeg('stream.avi', ['h264_start_codes'], '-vtag', 'H264')
    doc = check(mux.mkvmerge('vfw-h264.mkv', [avi], '--engage', 'allow_avc_in_vfw_mode'))
    assert doc.tracks[0].codec_id == VFW
    assert doc.blocks[0].frames[0].startswith(b'\0\0\0\1\x67')
