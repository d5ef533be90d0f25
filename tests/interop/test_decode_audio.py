"""Audio codecs, each under every name that leads to a decoder, and what cannot work and why."""
import pytest
from streams import Case, high_efficiency_aac, merged, muxed, rewritten, sound, wave_format

ACM = 'A_MS/ACM'
AAC = '-c:a aac -b:a 48k'
MP3 = '-c:a libmp3lame -b:a 64k'
AC3 = '-c:a ac3 -b:a 64k'
DTS = '-c:a dca -ac 2 -b:a 320k'
FLAC = '-c:a flac'


def named(codec_id, with_private=False):
    return lambda private: sound(codec_id, private if with_private else b'')


def in_wave(tag, channels=1, align=1, bits=16, own=True):
    """`own`: the codec's own configuration goes behind the wave format."""
    return lambda private: sound(ACM, wave_format(tag, channels, align=align, bits=bits, extra=private if own else b''),
                                 channels=channels, bits=bits)


def padded_flac(size):
    """A configuration of `size` bytes: a padding block behind the stream description."""
    def describe(private):
        rest = size - len(private) - 4
        return sound('A_FLAC', private[:4] + b'\0' + private[5:] + b'\x81' + rest.to_bytes(3, 'big') + bytes(rest))
    return describe


def acm(name, mime, options, *rest):
    return Case(name, ACM, mime, muxed('-c:a ' + options, 'mka'), *rest)


NO_SIZE = 'no key tells the sample size, 16 bits are taken'

CASES = [
    Case('AAC', 'A_AAC', 'audio/mp4a-latm', muxed(AAC)),
    Case('AAC, laced', 'A_AAC', 'audio/mp4a-latm', merged(AAC, 'm4a')),
    Case('AAC, stereo', 'A_AAC', 'audio/mp4a-latm', muxed(AAC + ' -ac 2')),
    Case('AAC, no CodecPrivate', 'A_AAC/MPEG4/LC', 'audio/mp4a-latm', rewritten(AAC, named('A_AAC/MPEG4/LC'))),
    Case('AAC, no CodecPrivate', 'A_AAC/MPEG2/LC', 'audio/mp4a-latm', rewritten(AAC, named('A_AAC/MPEG2/LC'))),
    Case('AAC, no CodecPrivate', 'A_AAC', '', rewritten(AAC, named('A_AAC'), reference=True), 'dropped',
         'the CodecID names no profile'),
    Case('AAC, no CodecPrivate', 'A_AAC/MPEG4/MAIN', '', rewritten(AAC, named('A_AAC/MPEG4/MAIN'), reference=True),
         'dropped', 'no configuration is made for this profile'),
    Case('AAC in a wave format', ACM, 'audio/mp4a-latm', rewritten(AAC, in_wave(0xFF))),
    Case('HE-AAC', 'A_AAC', 'audio/mp4a-latm', high_efficiency_aac(lambda config: sound('A_AAC', config, channels=2))),
    Case('HE-AAC, no CodecPrivate', 'A_AAC/MPEG4/LC/SBR', 'audio/mp4a-latm',
         high_efficiency_aac(lambda config: sound('A_AAC/MPEG4/LC/SBR', rate=22050.0, channels=2))),
    Case('MP3', 'A_MPEG/L3', 'audio/mpeg', muxed(MP3)),
    Case('MP3, laced', 'A_MPEG/L3', 'audio/mpeg', merged(MP3, 'mp3')),
    Case('MP3 in a wave format', ACM, 'audio/mpeg', rewritten(MP3, in_wave(0x55))),
    Case('MP2', 'A_MPEG/L2', 'audio/mpeg', muxed('-c:a mp2 -b:a 64k')),
    Case('MP2 in a wave format', ACM, 'audio/mpeg', rewritten('-c:a mp2 -b:a 64k', in_wave(0x50))),
    Case('AC-3', 'A_AC3', 'audio/ac3', muxed(AC3)),
    Case('AC-3, laced', 'A_AC3', 'audio/ac3', merged(AC3, 'ac3')),
    Case('AC-3 in a wave format', ACM, 'audio/ac3', rewritten(AC3, in_wave(0x2000))),
    Case('DTS', 'A_DTS', 'audio/dts', muxed(DTS)),
    Case('DTS, laced', 'A_DTS', 'audio/dts', merged(DTS, 'dts')),
    Case('DTS in a wave format', ACM, 'audio/dts', rewritten(DTS, in_wave(0x2001, channels=2))),
    Case('FLAC', 'A_FLAC', 'audio/flac', muxed(FLAC)),
    Case('FLAC, laced', 'A_FLAC', 'audio/flac', merged(FLAC, 'flac')),
    Case('FLAC, configuration of 300 bytes', 'A_FLAC', 'audio/flac', rewritten(FLAC, padded_flac(300))),
    Case('FLAC, configuration of 115 bytes', 'A_FLAC', 'audio/flac', rewritten(FLAC, padded_flac(115))),
    Case('Vorbis', 'A_VORBIS', 'audio/vorbis', muxed('-c:a libvorbis -ac 2')),
    Case('Vorbis, laced', 'A_VORBIS', 'audio/vorbis', merged('-c:a libvorbis -ac 2', 'ogg')),
    Case('PCM, 16 bits', 'A_PCM/INT/LIT', 'audio/raw', muxed('-c:a pcm_s16le -ac 2')),
    Case('PCM, 8 bits', 'A_PCM/INT/LIT', 'audio/raw', muxed('-c:a pcm_u8 -ac 2'), 'altered', NO_SIZE),
    Case('PCM, 24 bits', 'A_PCM/INT/LIT', 'audio/raw', muxed('-c:a pcm_s24le -ac 2'), 'altered', NO_SIZE),
    Case('PCM, 32 bits', 'A_PCM/INT/LIT', 'audio/raw', muxed('-c:a pcm_s32le -ac 2'), 'altered', NO_SIZE),
    Case('PCM in a wave format, 16 bits', ACM, 'audio/raw', rewritten('-c:a pcm_s16le', in_wave(1, align=2))),
    Case('PCM in a wave format, 24 bits', ACM, 'audio/raw', rewritten('-c:a pcm_s24le', in_wave(1, align=3, bits=24))),
    Case('PCM, big-endian, 16 bits', 'A_PCM/INT/BIG', 'audio/lpcm', muxed('-c:a pcm_s16be -ac 2')),
    Case('PCM, big-endian, 24 bits', 'A_PCM/INT/BIG', 'audio/lpcm', muxed('-c:a pcm_s24be')),
    Case('PCM, big-endian, 32 bits', 'A_PCM/INT/BIG', 'audio/lpcm', muxed('-c:a pcm_s32be')),
    Case('PCM in a wave format, float', ACM, 'audio/lpcm',
         rewritten('-c:a pcm_f32le', in_wave(3, align=4, bits=32)), 'altered', 'offered as big-endian integers'),
    acm('MS ADPCM', 'audio/adpcm', 'adpcm_ms'),
    acm('MS ADPCM, stereo', 'audio/adpcm', 'adpcm_ms -ac 2'),
    acm('IMA ADPCM', 'audio/adpcm', 'adpcm_ima_wav'),
    acm('Yamaha ADPCM', 'audio/adpcm', 'adpcm_yamaha'),
    acm('Flash ADPCM', 'audio/adpcm', 'adpcm_swf'),
    acm('A-law', 'audio/g711-alaw', 'pcm_alaw'),
    acm('mu-law', 'audio/g711-mlaw', 'pcm_mulaw'),
    acm('WMA 2', 'audio/wma', 'wmav2'),
    acm('WMA 1', '', 'wmav1', 'dropped', 'no MIME type for the format tag'),
    Case('RealAudio 14.4', 'A_REAL/14_4', 'audio/realaudio', muxed('-c:a real_144 -ar 8000', 'mka'), 'refused',
         'nothing in the metadata says which RealAudio it is'),
] + [Case(name, codec_id, '', muxed(options, 'mka'), 'dropped', 'no MIME type for the CodecID')
     for name, codec_id, options in [
         ('Opus', 'A_OPUS', '-c:a libopus -b:a 32k'),
         ('E-AC-3', 'A_EAC3', '-c:a eac3 -b:a 64k'),
         ('ALAC', 'A_ALAC', '-c:a alac'),
         ('WavPack', 'A_WAVPACK4', '-c:a wavpack'),
         ('TTA', 'A_TTA1', '-c:a tta'),
         ('PCM, float', 'A_PCM/FLOAT/IEEE', '-c:a pcm_f32le'),
     ]]


@pytest.mark.parametrize('case', CASES, ids=lambda case: '%s in %s' % (case.name, case.codec_id))
def test_audio(judge, case):
    judge(case)
