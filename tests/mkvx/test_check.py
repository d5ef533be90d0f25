"""mkvx check: what it says of files that each have one peculiarity, and how it goes through folders."""
import json
import os
import re
import signal
import struct
import subprocess
import zlib
from pathlib import Path

import jsonschema
import pytest

import craft
import waiting

AVCC = bytes.fromhex('0142c01effe1000867420bf00102030401000468ce3880')
UNIT = b'\0\0\0\2\x65\x11'


def avc(no=1, record=AVCC, *more):
    return craft.video(no, 'V_MPEG4/ISO/AVC', craft.private(record), *more)


def mp3(no=2):
    return craft.audio(no, 'A_MPEG/L3')


def film(*tracks, blocks=(), behind=(), **options):
    """Each track has a block; the Cues name the first track unless told otherwise. `behind`: elements behind the Cluster."""
    own = [craft.simple_block(i + 1, i, UNIT) for i in range(len(tracks))] if not blocks else blocks
    return craft.matroska(tracks, craft.cluster(0, *own), *behind, **{'cue_for': 1, **options})


def encoding(algorithm, scope=1, order=0, settings=b''):
    compression = craft.element(0x5034, craft.uint(0x4254, algorithm) + craft.element(0x4255, settings))
    return craft.element(0x6240, craft.uint(0x5031, order) + craft.uint(0x5032, scope) + compression)


def encodings(*each):
    return craft.element(0x6D80, b''.join(each))


def astray(data):
    """The first CueClusterPosition is off by one."""
    last = data.index(b'\xf1' + (1 << 56 | 8).to_bytes(8, 'big')) + 9 + 7
    return data[:last] + bytes([data[last] ^ 1]) + data[last + 1:]


PCM24 = craft.element(0xAE, craft.uint(0xD7, 2) + craft.uint(0x83, 2) + craft.text(0x86, 'A_PCM/INT/LIT') +
                      craft.element(0xE1, craft.real(0xB5, 48000.0) + craft.uint(0x6264, 24)))
ENCRYPTION = craft.element(0x6240, craft.uint(0x5033, 1) + craft.element(0x5035, craft.uint(0x47E1, 5)))
VORBIS_LONG = b'\2\x1e\xff\x05' + b'\1' + b'i' * 29 + b'\3' + b'c' * 259 + b'\5setup'
BITMAP = craft.private(bytes(16) + b'H264' + bytes(20))
ASS = b'0,0,Default,,0,0,0,,'
EVENTS = [craft.simple_block(1, 0, UNIT), craft.block_group(2, 1, ASS + b'one', 9), craft.block_group(2, 2, ASS + b'two', 9),
          craft.simple_block(1, 3, UNIT)]
BAD_LACE = craft.bad_laces(1, 1)
GOOD = film(avc(), mp3())
VP9 = bytes.fromhex('8249834200003f002ff6380000') + bytes(20)  # 64 x 48


def beside(no, addition_id, data, frame=UNIT):
    """A block with something beside its frame."""
    more = craft.element(0xA6, craft.uint(0xEE, addition_id) + craft.element(0xA5, data))
    block = craft.element(0xA1, bytes([0x80 | no, 0, 0, 0]) + frame)
    return craft.element(0xA0, block + craft.element(0x75A1, more))


def chapters(*times, ordered=True, more=b''):
    """Times in seconds."""
    atoms = [craft.element(0xB6, craft.uint(0x91, start * 10**9) + craft.uint(0x92, end * 10**9) + more) for start, end in times]
    return craft.element(0x1043A770, craft.element(0x45B9, craft.uint(0x45DD, ordered) + b''.join(atoms)))


def timed(unit, *times, no=1):
    return [craft.simple_block(no, time, unit) for time in times]


def vorbis(setup):
    first = b'\1vorbis' + struct.pack('<IBIIIIBB', 0, 2, 48000, 0, 0, 0, 0xB8, 1)
    return craft.private(bytes([2, len(first), 16]) + first + b'\3vorbis' + bytes(9) + b'\5vorbis' + setup)


def dolby(kind, profile):
    record = bytes([1, 0, profile << 1, 0])
    return craft.element(0x41E4, craft.element(0x41E7, kind) + craft.element(0x41ED, record))


def attachments(count):
    """Which a SeekHead leads to."""
    return film(avc(), led_to=[craft.element(0x1941A469, craft.element(0x61A7, b'') * count)])


def deep_chapters(depth):
    """A chapter within a chapter, to which a SeekHead leads."""
    atoms = b''
    for _ in range(depth):
        atoms = craft.element(0xB6, atoms)
    return film(avc(), led_to=[craft.element(0x1043A770, craft.element(0x45B9, atoms))])


def long_laces(header_size):
    """256 frames of one block, whose common bytes come to 256 times this size."""
    sound = craft.audio(2, 'A_MPEG/L3', craft.stripped(b'>' * header_size))
    laces = craft.simple_block(2, 5, b'\xff' + bytes(255), lacing=1)
    return film(avc(), sound, blocks=[craft.simple_block(1, 0, UNIT), craft.simple_block(2, 0, b'a'), laces])


AAC = craft.audio(1, 'A_AAC', craft.private(b'\x12\x10'), rate=44100.0)
SILENCE = bytes.fromhex('211004608c1c')  # an AAC frame of this track


def laced_aac(single, laced):
    """So many blocks of one frame and of two."""
    two = [craft.simple_block(1, 500 + i, bytes([1, len(SILENCE)]) + 2 * SILENCE, lacing=1) for i in range(laced)]
    return film(AAC, blocks=timed(SILENCE, *range(single)) + two)


def ac3(*words):
    units = [craft.simple_block(2, time, word + bytes(9)) for time, word in enumerate(words)]
    return film(avc(), craft.audio(2, 'A_AC3'), blocks=timed(UNIT, 0) + units)


AC3, NO_AC3 = b'\x0b\x77', b'\x0b\x76'
TWO_IN_A_GROUP = craft.element(0xA0, 2 * craft.element(0xA1, b'\x81\0\0\0' + UNIT))
NEXT, PREVIOUS = craft.element(0x3EB923, b'u' * 16), craft.element(0x3CB923, b'u' * 16)
HEAD = len(craft.element(0x1A45DFA3, craft.text(0x4282, 'matroska') + craft.uint(0x4285, 2)))

# name: (file, verdict, {code: (weight, part of the sentence)}), with at least every finding that is more than a note.
CASES = {
    'good': (GOOD, 'plays', {}),
    'opus': (film(avc(), craft.audio(2, 'A_OPUS')), 'plays_with_losses', {'unknown_codec_id': ('loss', 'Opus')}),
    'vp8': (film(craft.video(1, 'V_VP8')), 'nothing_plays', {'unmapped_tag': ('loss', '"VPXV"'),
            'units_undecodable': ('note', "ends within a VP8 key frame's head")}),
    'vfw-short': (film(craft.video(1, 'V_MS/VFW/FOURCC', craft.private(bytes(39))), mp3()), 'plays_with_losses',
                  {'private_too_short': ('loss', '39 of the 40')}),
    'acm-tag': (film(avc(), craft.audio(2, 'A_MS/ACM', craft.private(b'\x4f\x67' + bytes(16)))), 'plays_with_losses',
                {'unmapped_tag': ('loss', '0x674F')}),
    'buttons': (film(avc(), craft.element(0xAE, craft.uint(0xD7, 2) + craft.uint(0x83, 18))), 'plays_with_losses',
                {'track_type': ('loss', 'type 18')}),
    'vobsub': (film(avc(), craft.subtitle(2, 'S_VOBSUB')), 'plays_with_losses', {'subtitle_kind': ('loss', 'VobSub')}),
    'aac-bare': (film(avc(), craft.audio(2, 'A_AAC')), 'plays_with_losses', {'aac_no_profile': ('loss', 'A_AAC')}),
    'aac-rate': (film(avc(), craft.audio(2, 'A_AAC/MPEG4/LC', rate=44000.0)), 'plays_with_losses',
                 {'aac_frequency': ('loss', '44000 Hz')}),
    'aac-main': (film(avc(), craft.audio(2, 'A_AAC/MPEG4/MAIN')), 'plays_with_losses', {'aac_profile': ('loss', 'MAIN')}),
    'aac-byte': (film(avc(), craft.audio(2, 'A_AAC', craft.private(b'\x12'))), 'plays_with_losses',
                 {'aac_private_too_short': ('mute', '1 byte')}),
    'aac-sbr': (film(avc(), craft.audio(2, 'A_AAC/MPEG4/LC/SBR')), 'plays_with_losses', {'aac_sbr_as_ltp': ('loss', 'LTP')}),
    'pcm24': (film(avc(), PCM24), 'plays_with_losses', {'pcm_sample_size': ('mute', '24 bits')}),
    'vfw-avc': (film(craft.video(1, 'V_MS/VFW/FOURCC', BITMAP), mp3()),
                'plays_with_losses', {'no_parameter_sets': ('loss', '50 blocks')}),
    'avc-3-bytes': (film(avc(1, b'\1\x42\xc0')), 'nothing_plays', {'record_too_short': ('mute', 'video/mp4v-es')}),
    'avc-lengths': (film(avc(1, AVCC[:4] + b'\xfd' + AVCC[5:]), mp3()), 'plays_with_losses',
                    {'nal_length': ('mute', 'lengths of 2 bytes')}),
    'avc-6-bytes': (film(avc(1, AVCC[:6]), mp3()), 'stops_the_media_process', {'format_aborts': ('fatal', '6 bytes')}),
    'avc-version': (film(avc(1, b'\0' + AVCC[1:])), 'stops_the_media_process', {'format_aborts': ('fatal', 'version 0')}),
    'avc-cut': (film(avc(1, AVCC[:-1])), 'stops_the_media_process', {'format_aborts': ('fatal', 'within a picture')}),
    'avc-large': (film(avc(1, AVCC[:6] + struct.pack('>H', 1021) + bytes(1021) + b'\0')), 'stops_the_media_process',
                  {'format_aborts': ('fatal', '1024 bytes')}),
    'hevc-short': (film(craft.video(1, 'V_MPEGH/ISO/HEVC', craft.private(b'\1' + bytes(20) + b'\3'))), 'stops_the_media_process',
                   {'format_aborts': ('fatal', '22 bytes')}),
    'vorbis-none': (film(avc(), craft.audio(2, 'A_VORBIS')), 'stops_the_media_process',
                    {'vorbis_headers': ('fatal', 'no CodecPrivate'), 'process_ends': ('loss', 'video/avc'),
                     'stops_at_opening': ('fatal', '911 CHECK(codecPrivateSize >= 3) failed')}),
    'vorbis-long': (film(craft.audio(1, 'A_VORBIS', craft.private(VORBIS_LONG))), 'stops_the_media_process',
                    {'vorbis_headers': ('fatal', '255 bytes or more'), 'stops_at_opening': ('fatal', 'CHECK(')}),
    'subtitle-number': (film(avc(), craft.audio(2, 'A_OPUS'), craft.subtitle(3)), 'plays_with_losses',
                        {'unknown_codec_id': ('loss', ''), 'subtitle_number': ('mute', 'at index 1 this one, track number 3, gets none')}),
    'no-master': (film(craft.video(1, 'V_VP8'), craft.subtitle(2)), 'nothing_plays',
                  {'unmapped_tag': ('loss', ''), 'no_master': ('mute', 'number 1')}),
    'merged': (film(avc(), craft.subtitle(2, 'S_TEXT/ASS'), blocks=EVENTS), 'plays_with_losses',
               {'events_merged': ('loss', '1 of its 2')}),
    'no-duration': (film(avc(), duration_ms=0.0), 'plays_with_losses', {'no_duration': ('loss', 'Duration counts as 0')}),
    'scan': (film(avc(), cue_for=None), 'plays_with_losses', {'no_duration': ('loss', '00:00:01.000')}),
    'scan-short': (craft.matroska([avc()], craft.cluster(0, craft.simple_block(1, 0, UNIT)),
                                  craft.cluster(400, craft.simple_block(1, 0, UNIT))), 'plays_with_losses',
                   {'duration_cut': ('loss', '00:00:00.400 is shown as the duration')}),
    'scan-recorded': (craft.matroska([avc()], craft.cluster(0, craft.simple_block(1, 0, UNIT)),
                                     craft.cluster(400, *[craft.simple_block(1, t, UNIT) for t in (0, 300)]), duration_ms=0.0),
                      'plays_with_losses', {'duration_cut': ('loss', '00:00:00.400 is shown as the duration, and every seek to it or behind it ends the '
                                                             'stream: without Cues that is the start of the last Cluster; its last unit begins at 00:00:00.700')}),
    'duration-short': (film(avc(), blocks=[craft.simple_block(1, t, UNIT) for t in (0, 900)], duration_ms=100.0), 'plays_with_losses',
                       {'duration_cut': ('loss', 'seek to 00:00:00.100 or behind it')}),
    'no-key-frames': (film(avc(), mp3(), blocks=[craft.simple_block(1, 0, UNIT), craft.simple_block(2, 1, UNIT, key=False)]),
                      'plays_with_losses', {'seeks_end': ('loss', 'holds a key frame of this track')}),
    'seek-unreadable': (film(craft.audio(1, 'A_MPEG/L3', craft.stripped(b'>')), blocks=[BAD_LACE, craft.simple_block(1, 5, b'good')]),
                        'plays_with_losses', {'blocks_unreadable': ('loss', '1 of its 2'), 'seeks_end': ('loss', 'cannot be read')}),
    'cues-other': (film(avc(), mp3(), cue_for=2), 'plays_with_losses', {'cues_miss_master': ('loss', 'number 1')}),
    'cues-astray': (astray(film(avc())), 'plays_with_losses', {'cues_astray': ('loss', '1 position')}),
    'encrypted': (film(avc(1, AVCC, encodings(ENCRYPTION)), mp3()), 'plays_with_losses', {'encrypted': ('mute', 'encrypted')}),
    'encrypted-vp8': (film(craft.video(1, 'V_VP8', encodings(ENCRYPTION)), mp3(), cue_for=None), 'plays_with_losses',
                      {'unmapped_tag': ('loss', ''), 'encrypted': ('mute', 'no other codec'), 'no_duration': ('loss', '')}),
    'lzo': (film(avc(1, AVCC, encodings(encoding(2)))), 'nothing_plays', {'encoding_unsupported': ('mute', 'algorithm 2')}),
    'private-zlib': (film(avc(1, AVCC, encodings(encoding(0, scope=2)))), 'nothing_plays', {'private_encoded': ('mute', 'stored encoded')}),
    'stacked': (film(avc(1, AVCC, encodings(encoding(0), encoding(3, order=1, settings=b'\0'))),
                     blocks=[craft.simple_block(1, 0, zlib.compress(UNIT))]), 'nothing_plays',
                {'encodings_stacked': ('mute', 'under header stripping'), 'bad_compression': ('loss', '1 frame')}),
    'bad-zlib': (film(avc(1, AVCC, encodings(encoding(0)))), 'plays_with_losses', {'bad_compression': ('loss', '1 frame')}),
    'before-zero': (film(avc(), blocks=[craft.simple_block(1, -5, UNIT), craft.simple_block(1, 5, UNIT)]), 'plays_with_losses',
                    {'times_wrap': ('loss', '1 of its 2')}),
    'bad-laces': (film(craft.audio(1, 'A_MPEG/L3', craft.stripped(b'>')), blocks=[craft.simple_block(1, 0, b'good'), BAD_LACE, BAD_LACE]),
                  'plays_with_losses', {'blocks_unreadable': ('loss', '2 of its 3')}),
    'bad-laces-whole': (film(mp3(1), blocks=[craft.simple_block(1, 0, b'good'), BAD_LACE]), 'plays', {}),
    'laced': (film(mp3(1), blocks=[craft.simple_block(1, 0, b'\1aabb', lacing=2)]), 'plays', {}),
    'units-cut': (film(avc(), blocks=[craft.simple_block(1, 0, UNIT + b'\0\0\0\x99z')]), 'plays_with_losses',
                  {'units_cut': ('loss', '1 of its units')}),
    'only-block-bad': (film(craft.audio(1, 'A_MPEG/L3', craft.stripped(b'>')), blocks=[BAD_LACE]), 'nothing_plays',
                       {'blocks_unreadable': ('mute', '1 of its 1')}),
    'cut-behind-head': (GOOD[:GOOD.index(b'\x1f\x43\xb6\x75')], 'nothing_plays',
                        {'no_blocks': ('mute', 'no block'), 'no_clusters': ('mute', 'no Cluster'), 'truncated': ('loss', ''),
                         'cues_astray': ('loss', '')}),
    'cut-in-cluster': (GOOD[:GOOD.index(b'\x1f\x43\xb6\x75') + 14], 'nothing_plays',
                       {'no_blocks': ('mute', 'no block'), 'truncated': ('loss', ''), 'damaged': ('loss', '')}),
    'subtitle-empty': (film(craft.audio(1, 'A_OPUS'), craft.subtitle(2), blocks=[craft.simple_block(1, 0, UNIT)]), 'nothing_plays',
                       {'unknown_codec_id': ('loss', ''), 'no_master': ('mute', ''), 'no_blocks': ('mute', '')}),
    'subtitle-alone-empty': (film(avc(), craft.subtitle(2), blocks=[craft.simple_block(1, 0, UNIT)]), 'plays_with_losses',
                             {'no_blocks': ('mute', 'no block')}),
    'cut-file': (GOOD[:-3], 'plays_with_losses', {'blocks_unreadable': ('mute', 'past the end'), 'truncated': ('loss', 'at least 3 bytes')}),
    'segments': (GOOD + GOOD[HEAD:], 'plays_with_losses', {'more_segments': ('loss', '2 Segments'), 'duplicate_number': ('loss', '')}),
    'number-127': (film(avc(127), blocks=[craft.simple_block(127, 0, UNIT)], cue_for=127), 'nothing_plays',
                   {'all_ones_number': ('mute', '127'), 'blocks_without_track': ('loss', '1 block')}),
    'twins': (film(mp3(1), mp3(1), blocks=[craft.simple_block(1, 0, UNIT)]), 'plays_with_losses',
              {'duplicate_number': ('loss', 'both have the TrackNumber 1')}),
    'silent': (film(avc(), mp3(), blocks=[craft.simple_block(1, 0, UNIT)]), 'plays_with_losses', {'no_blocks': ('mute', 'no block')}),
    'config-cut': (film(avc(), craft.audio(2, 'A_DTS', craft.private(bytes(range(108))))), 'plays_with_losses',
                   {'config_cut': ('loss', '108 bytes without the last')}),
    'doctype': (craft.matroska([mp3(1)], doctype='mastroka'), 'nothing_plays', {'other_doctype': ('mute', '"mastroka"')}),
    'doctype-none': (GOOD.replace(craft.text(0x4282, 'matroska'), craft.text(0xEC, 'matroska')), 'nothing_plays',
                     {'no_doctype': ('mute', 'names no document type')}),
    'header-id': (GOOD[:12] + b'\x07' + GOOD[13:], 'nothing_plays', {'bad_header': ('mute', 'from byte 12 on')}),
    'header-size': (GOOD[:4] + b'\0' + GOOD[5:], 'nothing_plays', {'bad_header': ('mute', 'from byte 4 on')}),
    'segment-size': (GOOD[:HEAD + 5] + b'\x30' + GOOD[HEAD + 6:], 'plays',
                     {'size_damaged': ('note', 'size field of the Segment at %d is damaged: it says 135' % HEAD)}),
    'block-size': (film(avc(), mp3(), blocks=[craft.simple_block(1, 0, UNIT), b'\xa3\1\x40' + bytes(6) + b'\x82\0\0\x80']),
                   'plays_with_losses', {'blocks_unreadable': ('mute', 'past the end')}),
    'alpha': (film(craft.video(1, 'V_VP9'), blocks=[beside(1, 1, b'alpha', VP9)] * 3), 'plays_with_losses',
              {'alpha_withheld': ('loss', '15 bytes in the BlockAdditions of 3 blocks')}),
    'hdr10+': (film(avc(), blocks=[beside(1, 4, b'light')]), 'plays_with_losses', {'additions_withheld': ('loss', 'HDR10+')}),
    'ordered': (film(avc(), behind=[chapters((5, 9), (0, 5))]), 'plays_with_losses', {'chapters_ordered': ('loss', 'by the 2 chapters')}),
    'ordered-plain': (film(avc(), behind=[chapters((0, 5), (5, 9))]), 'plays', {'chapters_ordered': ('note', 'the same here')}),
    'ordered-not': (film(avc(), behind=[chapters((5, 9), (0, 5), ordered=False)]), 'plays', {}),
    'linked': (film(avc(), behind=[chapters((0, 5), ordered=False, more=craft.element(0x6E67, b'u' * 16))]), 'plays_with_losses',
               {'chapters_linked': ('loss', '1 chapter lies in another file')}),
    'too-new': (film(mp3(1)).replace(craft.uint(0x4285, 2), craft.uint(0x4285, 3)), 'nothing_plays', {'doctype_too_new': ('mute', 'version 3')}),
    'no-tracks': (craft.matroska([]), 'nothing_plays', {'no_tracks': ('mute', 'no TrackEntry')}),
    'no-sound-format': (film(avc(), craft.element(0xAE, craft.uint(0xD7, 2) + craft.uint(0x83, 2) + craft.text(0x86, 'A_MPEG/L3'))),
                        'plays_with_losses', {'no_audio_format': ('loss', '8000 Hz and one channel')}),
    'no-height': (film(craft.video(1, 'V_MPEG4/ISO/AVC', craft.private(AVCC), height=0), mp3()), 'plays_with_losses',
                  {'no_picture_size': ('loss', 'no picture size')}),
    'styles': (film(avc(), craft.subtitle(2, 'S_TEXT/ASS', craft.private(b'[Script Info]'))), 'plays',
               {'header_withheld': ('note', 'its styles are lost')}),
    'named': (film(avc(1, AVCC, craft.name('Main')), mp3()), 'plays', {'name_as_language': ('note', 'its Name')}),
    'time-scale': (film(avc(), craft.audio(2, 'A_MPEG/L3', craft.real(0x23314F, 2.5))), 'plays_with_losses',
                   {'track_time_scale': ('loss', 'TrackTimestampScale of 2.5')}),
    'number-0': (film(avc(), mp3(0), blocks=timed(UNIT, 0)), 'plays_with_losses',
                 {'bad_number': ('mute', 'TrackNumber is 0'), 'no_blocks': ('mute', '')}),
    'number-33-bits': (film(avc(), mp3(1 << 32), blocks=timed(UNIT, 0)), 'plays_with_losses',
                       {'bad_number': ('mute', 'TrackNumber is 4294967296'), 'no_blocks': ('mute', '')}),
    'number-29-bits': (film(avc(), mp3((1 << 28) - 1), blocks=timed(UNIT, 0)), 'plays_with_losses',
                       {'all_ones_number': ('mute', 'TrackNumber 268435455')}),
    'dts': (film(avc(), craft.audio(2, 'A_DTS')), 'plays', {'vendor_mime': ('note', 'audio/dts is a MIME type')}),
    'ac3': (ac3(AC3, AC3[::-1]), 'plays', {'no_decoder': ('note', 'known for audio/ac3')}),
    'ac3-one-bad': (ac3(AC3, NO_AC3, AC3), 'plays_with_losses', {'units_undecodable': ('loss', '1 of its 3 units cannot be decoded')}),
    'ac3-bad': (ac3(NO_AC3, NO_AC3), 'plays_with_losses', {'units_undecodable': ('mute', 'none of its 2 units can be decoded: the first has no AC-3')}),
    'vp9-bad': (film(craft.video(1, 'V_VP9'), blocks=timed(b'\0' + VP9, 0)), 'nothing_plays',
                {'units_undecodable': ('mute', 'its only unit cannot be decoded: it has no VP9 frame marker')}),
    'aac-bad': (film(AAC, blocks=timed(b'\xff' * 9, *range(65))), 'nothing_plays',
                {'units_undecodable': ('mute', 'none of its first 64 units can be decoded')}),
    'aac-some-bad': (film(AAC, blocks=timed(b'\xff' * 9, *range(64)) + timed(SILENCE, 64, 65)), 'nothing_plays',
                     {'units_undecodable': ('mute', 'none of its first 64 units')}),
    'aac-one-good': (film(AAC, blocks=timed(b'\xff' * 9, *range(63)) + timed(SILENCE, 63)), 'plays', {}),
    'aac-main-record': (film(avc(), craft.audio(2, 'A_AAC', craft.private(b'\x0a\x10'))), 'plays',
                        {'decoder_refuses': ('note', 'refuses its configuration (Main)')}),
    'aac-laced': (laced_aac(0, 2), 'nothing_plays', {'laced_units': ('mute', '2 of its 2 units')}),
    'aac-half-laced': (laced_aac(2, 2), 'nothing_plays', {'laced_units': ('mute', '2 of its 4 units')}),
    'aac-less-laced': (laced_aac(3, 2), 'plays_with_losses', {'laced_units': ('loss', '2 of its 5 units')}),
    'mp3-laced': (film(mp3(1), blocks=[craft.simple_block(1, t, b'\2aabbcc', lacing=2) for t in (0, 9)]), 'plays',
                  {'laced_units': ('note', '2 of its blocks hold 6 frames together')}),
    'dolby-5': (film(avc(1, AVCC, dolby(b'dvcC', 5)), mp3()), 'plays', {'dolby_vision': ('note', 'of profile 5')}),
    'vorbis-books': (film(avc(), craft.audio(2, 'A_VORBIS', vorbis(bytes(30)))), 'plays_with_losses',
                     {'config_undecodable': ('mute', 'their codebooks do not work')}),
    'group-of-two': (film(avc(), blocks=timed(UNIT, 0) + [TWO_IN_A_GROUP]), 'plays_with_losses',
                     {'blocks_unreached': ('loss', '1 of its 3 blocks lie where reading does not come')}),
    'no-segment': (GOOD[:HEAD], 'nothing_plays', {'no_segment': ('mute', 'no Segment')}),
    'goes-on': (film(avc(), info=PREVIOUS + NEXT), 'plays', {'segments_linked': ('note', 'goes on in another file')}),
    'began-elsewhere': (film(avc(), info=PREVIOUS), 'plays', {'segments_linked': ('note', 'begins in another file')}),
    'linked-twice': (film(avc(), behind=[chapters((0, 5), (5, 9), ordered=False, more=craft.element(0x6E67, b'u' * 16))]),
                     'plays_with_losses', {'chapters_linked': ('loss', '2 chapters lie in other files')}),
    'attachments': (attachments(16384), 'plays', {}),
    'attachments-more': (attachments(16385), 'plays_with_losses', {'reader_limit': ('loss', '1 limit met')}),
    'chapters-deep': (deep_chapters(64), 'plays', {}),
    'chapters-deeper': (deep_chapters(65), 'plays_with_losses', {'nested_too_deep': ('loss', '1 element nested deeper')}),
    'frames-long': (long_laces((1 << 20) - 1), 'plays', {}),
    'frames-too-long': (long_laces((1 << 20) + 1), 'plays_with_losses',
                        {'elements_too_large': ('loss', '1 element'), 'blocks_unreadable': ('loss', 'larger than can be handled')}),
    'webm': (film(avc(), doctype='webm'), 'plays', {'webm_confidence': ('note', 'confidence 0.5')}),
    'duration-at-end': (film(avc(), blocks=timed(UNIT, 0, 900), duration_ms=900.0), 'plays', {'duration_cut': ('note', '00:00:00.900')}),
    'duration-near': (film(avc(), blocks=timed(UNIT, 0, 900), duration_ms=400.001), 'plays', {'duration_cut': ('note', '00:00:00.400')}),
    'duration-far': (film(avc(), blocks=timed(UNIT, 0, 900), duration_ms=400.0), 'plays_with_losses', {'duration_cut': ('loss', '')}),
    'riff': (b'RIFF....WAVE', 'no_matroska', {'not_claimed': ('mute', '1A 45 DF A3')}),
    'empty': (b'', 'no_matroska', {'not_claimed': ('mute', 'empty')}),
}
EXITS = {'plays': 0, 'no_matroska': 1, 'unreadable': 1, 'plays_with_losses': 3, 'nothing_plays': 4,
         'stops_the_media_process': 5, 'undecided': 6}
SCHEMA = Path(__file__).parents[2] / 'docs/schemas/check.schema.json'


@pytest.fixture(scope='module')
def library(tmp_path_factory):
    """A folder of all cases, one folder deeper."""
    folder = tmp_path_factory.mktemp('library')
    (folder / 'deeper').mkdir()
    for name, (data, _, _) in CASES.items():
        (folder / 'deeper' / (name + '.mkv')).write_bytes(data)
    return folder


@pytest.fixture(scope='module')
def report(library, binary):
    run = subprocess.run([binary, 'check', '--format', 'json', '--jobs', '3', library], capture_output=True, timeout=120)
    assert run.returncode == EXITS['stops_the_media_process'], run.stderr
    assert run.stderr == b''
    return json.loads(run.stdout)


def findings(checked):
    """All of a file, as a list of (code, weight, sentence, evidence)."""
    of_tracks = [f for t in checked['tracks'] for f in t['findings'] + [t[k] for k in ['dropped'] if k in t]]
    return of_tracks + checked['findings']


@pytest.mark.parametrize('name', CASES)
def test_verdict_and_reasons(report, name):
    data, verdict, expected = CASES[name]
    checked = next(f for f in report['files'] if f['file'].endswith('/%s.mkv' % name))
    grave = {f['code']: f for f in findings(checked) if f['weight'] != 'note' or f['code'] in expected}
    assert {code: f['weight'] for code, f in grave.items()} == {code: weight for code, (weight, _) in expected.items()}
    for code, (_, part) in expected.items():
        assert part in grave[code]['sentence']
    assert checked['verdict'] == verdict and bool(checked['reason']) == (verdict != 'plays')
    assert checked['size'] == len(data)
    if 'bytes' in checked:
        assert sum(checked['bytes'].values()) == len(data)
    for finding in findings(checked):  # the bytes shown are the file's, from where they are said to stand
        if 'element' in finding.get('evidence', {}):
            evidence = finding['evidence']
            assert data[evidence['data_offset']:].startswith(bytes.fromhex(evidence['bytes']))
            assert evidence['data_offset'] - evidence['offset'] in range(2, 13)


# Files that lie next to one of CASES, and of which this is not said.
SILENT = {
    'duration_cut': film(avc(), blocks=timed(UNIT, 0, 900), duration_ms=901.0),
    'segments_linked': film(avc(), info=craft.element(0x3EB923, b'')),
    'dolby_vision': film(avc(1, AVCC, dolby(b'dvcC', 8)), mp3(2)),
    'encrypted': film(avc(), craft.audio(2, 'A_OPUS', encodings(craft.element(0x6240, craft.uint(0x5032, 2) + craft.uint(0x5033, 1))))),
    'track_time_scale': film(avc(), craft.audio(2, 'A_MPEG/L3', craft.real(0x23314F, 1.0))),
    'alpha_withheld': film(avc(), blocks=[beside(1, 1, b'alpha')]),
    'laced_units': film(craft.audio(1, 'A_VORBIS', vorbis(bytes(30))), blocks=[craft.simple_block(1, 0, b'\1aabb', lacing=2)]),
    'events_merged': film(avc(), craft.subtitle(2, 'S_TEXT/ASS'), blocks=[EVENTS[1], EVENTS[0], EVENTS[2], EVENTS[3]]),
}


@pytest.mark.parametrize('code', SILENT)
def test_what_is_not_said_of_a_near_case(mkvx, write, code):
    assert code not in [f['code'] for f in findings(mkvx('check', '--format', 'jsonl', write('near.mkv', SILENT[code])).json())]


# Made by other tests, of sources, devices and processes; and by no file that is known.
ELSEWHERE = {'time_limit', 'stops_while_read', 'no_cues_streamed', 'decoder_limit', 'cues_unreached', 'cues_empty',
             'aac_judged_otherwise', 'decoder_profile'}
UNMADE = {'format_refused', 'no_units', 'no_memory'}


def test_codes_of_the_table(report):
    """What is found stands in the manual's table, and what stands there is found in a file."""
    table = (Path(__file__).parents[2] / 'docs/mkvx.md').read_text().split('| Codes of tracks that are not offered')[1]
    rows = re.findall(r'^\| (`[^|]*) \|', table.split('The last line of a file')[0], re.M)
    told = [code for row in rows for code in re.findall(r'`(\w+)`', row)]
    made = {f['code'] for checked in report['files'] for f in findings(checked)}
    assert made <= set(told) and len(told) == len(set(told))
    assert set(told) - made - ELSEWHERE == UNMADE


def test_sentences_in_the_verdict_line(mkvx, write):
    """What kind of track does not play at all stands first; then tracks in the file's order, and the file's own."""
    loss = craft.video(1, 'V_MPEG4/ISO/AVC', craft.private(AVCC), height=0)
    for tracks, reason in [
            ([loss, craft.audio(2, 'A_OPUS')], 'no sound: track number 2: the plug-in does not know the codec A_OPUS (Opus); and 1 more'),
            ([loss, mp3(), craft.audio(3, 'A_OPUS')], 'track number 3: the plug-in does not know the codec A_OPUS (Opus); and 1 more'),
            ([loss, mp3()], 'track number 1: it has no picture size'),
            ([craft.video(1, 'V_AV1'), craft.audio(2, 'A_OPUS'), mp3(3)], 'no picture: track number 1: the plug-in does not know the codec V_AV1 (AV1); and 1 more')]:
        path = write('order.mkv', film(*tracks))
        assert mkvx('check', path).out.splitlines()[0] == '%s: plays with losses: %s' % (path, reason)


def test_what_a_network_stream_lacks(mkvx, serve, write):
    """Of a file without Cues, and of one whose Cues lie where opening does not look; opening a file on a disk comes to those."""
    media = [craft.cluster(time, *timed(UNIT, 0)) for time in (0, 500)]
    first = craft.matroska([avc()], *media).index(media[0]) - HEAD - 12
    for data, codes, on_disk in [(craft.matroska([avc()], *media), ['no_cues_streamed'], ['duration_cut', 'no_cues']),
                                 (craft.matroska([avc()], *media, craft.cue(0, 1, first)), ['cues_unreached'], []),
                                 (craft.matroska([avc()], *media, cue_for=1), [], [])]:
        streamed = mkvx('check', '--format', 'jsonl', serve(data).url('good'))
        assert [f['code'] for f in findings(streamed.json())] == codes and streamed.code == (3 if codes else 0)
        assert [f['weight'] for f in findings(streamed.json())] == ['loss'] * len(codes)
        assert [f['code'] for f in findings(mkvx('check', '--format', 'jsonl', write('disk.mkv', data)).json())] == on_disk


def test_quick_leaves_out_what_units_tell(mkvx, write):
    quick, full = [mkvx('check', *options, '--format', 'jsonl', write('film.mkv', CASES['ac3-bad'][0])) for options in (['--quick'], [])]
    assert (quick.code, full.code) == (0, 3) and [f['code'] for f in findings(quick.json())] == ['no_decoder']
    assert set(full.json()) - set(quick.json()) == {'bytes'}
    for short, long in zip(quick.json()['tracks'], full.json()['tracks'], strict=True):
        assert set(long) - set(short) == {'blocks', 'units', 'unit_bytes', 'unreadable'} and not set(short) - set(long)


def test_process_that_ends_while_it_reads(binary, serve, sample):
    """What was known of the file stays, and the next one is checked."""
    server = serve(sample.read_bytes(), gate=range(60000, 170000))
    command = [binary, 'check', '--jobs', '1', '--url-block', '4', '--format', 'jsonl', server.url('held'), sample]
    with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as run:
        server.wait_until_held()
        children = Path('/proc/%d/task/%d/children' % (run.pid, run.pid))
        waiting.until(lambda: len(children.read_text().split()) == 1)
        os.kill(int(children.read_text()), signal.SIGKILL)
        out, err = run.communicate(timeout=60)
    ended, next_one = map(json.loads, out.splitlines())
    assert run.returncode == EXITS['stops_the_media_process'] and ended['verdict'] == 'stops_the_media_process'
    assert [(f['code'], f['weight']) for f in ended['findings']] == [('stops_while_read', 'fatal')] and 'ends the process' in ended['reason']
    assert next_one['verdict'] == 'plays'


# AudioSpecificConfig: part of what is said of it, or None.
AAC_CONFIGURATIONS = {
    '1210': None, '2210': None,  # LC, LTP
    '0a10': None, '0f81770010': 'refuses its configuration (object type 1, Main)',  # 44.1 kHz, 192 kHz
    '1f81770010': 'refuses its configuration (object type 3, SSR)',
    '3210': 'object type 6', 'b210': 'object type 22', 'f94840': 'object type 42',
    'a210': None, 'a200': 'does not refuse its configuration (object type 20',
    '8a00': 'object type 17', '8a10': None, 'ba00': 'object type 23', 'f8e800': 'object type 39',
    '2b11': 'object type 5, SBR, cut off', '2b118800': None,
    'eb11': 'object type 29, PS, cut off', 'eb118800': None,
}


def test_aac_that_a_device_judges_otherwise(mkvx, write):
    """Tracks of one file, each with its configuration; whatever this machine's decoder agrees on is not mentioned."""
    tracks = [craft.audio(i, 'A_AAC', craft.private(bytes.fromhex(config)))
              for i, config in enumerate(AAC_CONFIGURATIONS, 1)]
    checked = mkvx('check', '--quick', '--format', 'json', write('aac.mkv', film(*tracks))).json()['files'][0]
    for track, (config, part) in zip(checked['tracks'], AAC_CONFIGURATIONS.items(), strict=True):
        said = [f for f in track['findings'] if f['code'] == 'aac_judged_otherwise']
        assert [f['weight'] for f in said] == ['note'] * (part is not None), config
        if part is not None:
            assert part in said[0]['sentence'], config
            assert said[0]['evidence']['bytes'] == config and said[0]['evidence']['element'] == 'CodecPrivate'


def test_evidence_and_remedy(report):
    """What decided is named with its place, and the command names the right stream."""
    cut = next(f for f in report['files'] if f['file'].endswith('/cut-file.mkv'))
    assert all(f['remedy']['text'].startswith('fetch the file again') for f in findings(cut) if 'remedy' in f)
    checked = next(f for f in report['files'] if f['file'].endswith('/opus.mkv'))
    dropped = checked['tracks'][1]['dropped']
    data = CASES['opus'][0]
    assert dropped['evidence'] == {'element': 'CodecID', 'offset': data.index(craft.text(0x86, 'A_OPUS')), 'data_offset': data.index(b'A_OPUS'), 'size': 6,
                                   'bytes': b'A_OPUS'.hex()}
    assert dropped['remedy']['command'][:2] == ['ffmpeg', '-i'] and '-c:a:0 aac' in dropped['remedy']['text']
    assert checked['reason'].startswith('no sound: track number 2: ')
    numbers = next(f for f in report['files'] if f['file'].endswith('/subtitle-number.mkv'))
    assert '-map 0:0 -map 0:2' in next(f['remedy']['text'] for f in findings(numbers) if f['code'] == 'subtitle_number')


CUES = craft.cue(0, 1, 0)
# name: (bytes in front of the Cues, the Cues, how far off the SeekHead leads, code, sentence up to what follows from it)
LOST_CUES = {
    'off': (b'', CUES, 3, 'cues_unreached', 'the Cues at {cues} are not found, for the SeekHead\'s entry at {entry} leads to {lead}'),
    'junk': (b'\xff' * 60, CUES, 0, 'cues_unreached',
             'the Cues at {cues} are not found, for the SeekHead\'s entry at {entry} leads to {lead}'),
    'unnamed': (b'', CUES, None, 'cues_unreached',
                'the Cues at {cues} are not found, for no SeekHead names them and opening does not come so far'),
    'empty': (b'', craft.element(0x1C53BB6B, b''), 0, 'cues_empty', 'the Cues at {cues} hold no cue point that names a place'),
    'malformed': (b'', craft.element(0x1C53BB6B, b'\0' * 30), 0, 'cues_empty', 'the Cues at {cues} hold no cue point that names a place'),
    'cut': (b'', b'', 900, 'no_cues', 'there are no Cues where the SeekHead\'s entry at {entry} leads to {lead}, behind the file\'s end'),
    'none': (b'', b'', None, 'no_cues', 'there are no Cues'),
}


@pytest.mark.parametrize('name', LOST_CUES)
def test_cues_that_are_not_found(mkvx, write, name):
    junk, cues, off, code, sentence = LOST_CUES[name]
    entry = b'' if off is None else craft.element(0x53AB, b'\x1c\x53\xbb\x6b') + craft.element(0x53AC, b'%08d' % 0)
    seek = craft.element(0x114D9B74, craft.element(0x4DBB, entry or craft.element(0x53AB, b'\x12\x54\xc3\x67')))
    media = craft.cluster(0, craft.simple_block(1, 0, UNIT)) + craft.cluster(500, craft.simple_block(1, 0, UNIT))
    data = craft.matroska([avc()], seek, media, junk + cues)
    segment = HEAD + 12
    leads_to = len(data) - len(junk + cues) + (off or 0)
    data = data.replace(b'%08d' % 0, (leads_to - segment).to_bytes(8, 'big'))
    said = [f for f in findings(mkvx('check', '--format', 'jsonl', write('lost.mkv', data)).json()) if 'cues' in f['code']]
    places = {'cues': data.rindex(cues), 'entry': data.index(b'\x4d\xbb'), 'lead': leads_to}
    assert [f['code'] for f in said] == [code] and said[0]['sentence'].endswith(': ' + sentence.format(**places))
    if cues:
        assert said[0]['evidence']['offset'] == places['cues']


def test_nothing_is_proposed_for_what_no_decoder_can_take(report):
    for name in 'encrypted', 'encrypted-vp8', 'vp8':
        checked = next(f for f in report['files'] if f['file'].endswith('/%s.mkv' % name))
        assert not [f for f in findings(checked) if 'remedy' in f]


def test_shares_of_a_file_that_is_known(mkvx, write):
    tracks = [avc(), craft.audio(2, 'A_OPUS')]
    void = craft.element(0xEC, b'v' * 20)
    blocks = [craft.simple_block(1, 0, UNIT), craft.simple_block(2, 0, b'opus!'), craft.simple_block(9, 0, b'stray')]
    lost = craft.cluster(9, *blocks[:1])
    data = craft.matroska(tracks, void, craft.cluster(0, *blocks), b'\0' * 40, lost) + b'tail'
    checked = mkvx('check', '--format', 'jsonl', write('parts.mkv', data)).json()
    shares = checked['bytes']
    assert shares.pop('metadata') == len(data) - sum(shares.values())
    # Nothing is found again behind damage that the file ends shortly after.
    assert shares == {'delivered': len(UNIT), 'not_offered': len(b'opus!'), 'padding': len(void),
                      'damaged': 40 + len(lost), 'unreachable': len(b'stray') + len(b'tail')}
    assert [t['units'] for t in checked['tracks']] == [1, 0]


def test_schema(report, mkvx, library):
    validator = jsonschema.Draft202012Validator(json.loads(SCHEMA.read_text()))
    validator.check_schema(validator.schema)
    validator.validate(report)
    for line in mkvx('check', '--format', 'jsonl', '--quick', library).lines():
        validator.validate(line)
        assert not [t for t in line['tracks'] if 'units' in t], 'what was not counted is not 0'
    assert not validator.is_valid({**report, 'files': [{**report['files'][0], 'verdict': 'fine'}]})


@pytest.mark.parametrize('verdict', ['plays', 'no_matroska', 'plays_with_losses', 'nothing_plays'])
def test_exit_code_and_text(mkvx, library, verdict):
    name = next(n for n, case in CASES.items() if case[1] == verdict)
    run = mkvx('check', library / 'deeper' / (name + '.mkv'))
    assert run.code == EXITS[verdict] and run.out.startswith('%s/deeper/%s.mkv: ' % (library, name))
    assert '\x1b' not in run.out and run.err == ''


@pytest.mark.parametrize('better, worse', [('plays', 'plays_with_losses'), ('plays_with_losses', 'no_matroska'), ('no_matroska', 'nothing_plays'),
                                           ('nothing_plays', 'stops_the_media_process')])
def test_exit_code_of_the_worst(mkvx, library, better, worse):
    files = [library / 'deeper' / (next(n for n, case in CASES.items() if case[1] == verdict) + '.mkv') for verdict in (better, worse)]
    for order in files, files[::-1]:
        run = mkvx('check', '--brief', *order)
        assert run.code == EXITS[worse] and run.out.splitlines()[4].startswith(worse.replace('_', ' ').replace('no m', 'no M'))


def test_links_in_a_ring_are_followed_once(mkvx, tmp_path):
    for folder, other in ('a', 'b'), ('b', 'a'):
        (tmp_path / folder).mkdir()
        (tmp_path / folder / 'film.mkv').write_bytes(GOOD)
        (tmp_path / folder / 'ring').symlink_to(tmp_path / other)
    for arguments, found in (['a'], ['a/film.mkv', 'a/ring/film.mkv']), (['a', 'b'], ['a/film.mkv', 'a/ring/film.mkv']):
        run = mkvx('check', '--follow', '--format', 'jsonl', *[tmp_path / a for a in arguments])
        assert sorted(os.path.relpath(line['file'], tmp_path) for line in run.lines()) == found and (run.code, run.err) == (0, '')


def test_folders_names_and_order(mkvx, tmp_path):
    for path in 'b/FILM.MKV', 'b/sound.mka', 'a.webm', 'unnamed', 'notes.txt', 'c.mks':
        (tmp_path / path).parent.mkdir(exist_ok=True)
        (tmp_path / path).write_bytes(b'text' if path == 'notes.txt' else GOOD)
    os.mkfifo(tmp_path / 'pipe.mkv')
    run = mkvx('check', '--brief', tmp_path, '/no/such.mkv')
    lines = run.out.splitlines()
    assert [line.split(': ')[0] for line in lines[:6]] == [str(tmp_path / n) for n in
                                                         ('a.webm', 'b/FILM.MKV', 'b/sound.mka', 'c.mks', 'unnamed')] + ['/no/such.mkv']
    assert run.code == 1 and '/no/such.mkv: unreadable: No such file or directory' in lines
    assert lines[8].split()[0] == 'unreadable' and lines[-1] == '6 files: 1 unreadable, 5 plays'
    empty = tmp_path / 'empty'
    empty.mkdir()
    assert mkvx('check', empty).code == 1


def nested_too_deep(folder):
    """Folders within folders, until a path to the last one has more bytes than a system takes; where that is."""
    name, at = 'd' * 250, os.open(folder, os.O_RDONLY)
    for _ in range(4096 // len(name) + 1):
        os.mkdir(name, dir_fd=at)
        inner = os.open(name, os.O_RDONLY, dir_fd=at)
        os.close(at)
        at = inner
    os.close(at)
    return name


def test_what_cannot_be_entered_is_said(mkvx, tmp_path):
    for folder in 'real', 'other':
        (tmp_path / folder).mkdir()
        (tmp_path / folder / 'film.mkv').write_bytes(GOOD)
    nested_too_deep(tmp_path / 'real')
    for link, target in ('real/up', tmp_path), ('real/gone.mkv', 'nothing'), ('real/note', 'nothing'), ('real/self.mkv', 'self.mkv'), \
            ('real/out', tmp_path / 'other'), ('real/twice', tmp_path / 'other'), ('real/film.webm', tmp_path / 'other/film.mkv'):
        (tmp_path / link).symlink_to(target)

    def judged(*options):
        run = mkvx('check', '--json', *options, tmp_path / 'real')
        assert run.code == 1
        names = {os.path.relpath(f['file'], tmp_path): f for f in run.json()['files']}
        deep = [name for name in names if '/ddd' in name]
        assert 'the folder cannot be entered: File name too long' in names.pop(deep[0])['reason'] and len(deep) == 1
        lost = [names.pop('real/gone.mkv'), names.pop('real/self.mkv')]
        assert [f['verdict'] for f in lost] == ['unreadable'] * 2
        assert 'leads nowhere: nothing' in lost[0]['reason'] and 'Too many levels of symbolic links' in lost[1]['reason']
        return list(names), sorted(line.split(': ')[1][len(str(tmp_path)):] for line in run.err.splitlines())
    assert judged() == (['real/film.mkv', 'real/film.webm'], ['/real/note', '/real/out', '/real/twice', '/real/up'])
    assert judged('--follow') == (['real/film.mkv', 'real/film.webm', 'real/out/film.mkv'], ['/real/note'])


def test_other_sources(binary, mkvx, write):
    """Standard input is spooled once for all children; a source that breaks is told apart from a damaged file."""
    piped = subprocess.run([binary, 'check', '--format', 'jsonl', '-', '-'], input=CASES['opus'][0], capture_output=True)
    assert [json.loads(line)['verdict'] for line in piped.stdout.splitlines()] == ['plays_with_losses'] * 2
    good = write('good.mkv', GOOD)
    assert mkvx('check', '--fail-at', '1', good).code == EXITS['unreadable']
    unsized = mkvx('check', '--no-size', '--format', 'jsonl', good)
    assert unsized.code == 0 and 'bytes' not in unsized.json() and unsized.json()['tracks'][1]['units'] == 1


def system_reads():
    """Of this process and of all that it has waited for."""
    return int(re.search(r'syscr: (\d+)', Path('/proc/self/io').read_text())[1])


def test_bytes_come_from_the_source_once(mkvx, serve, sample, write):
    """However many readers parse them: the sniffer, the child that tries the file out, the plug-in, the walks over elements."""
    reads = []
    for path in write('empty.mkv', b''), sample:
        before = system_reads()
        mkvx('check', path)
        reads.append(system_reads() - before)
    assert 0 < reads[1] - reads[0] < 1.5 * sample.stat().st_size / 8192
    server = serve(sample.read_bytes())
    assert mkvx('check', server.url('good')).code == 0
    assert sorted(first for first, _ in server.seen) == [0, 65536, 131072]


def test_time_limit_leaves_what_was_known(mkvx, sample):
    """On a slow source; a limit that lets opening end, but not the reading of all units, is found by trying."""
    for limit in '0.5', '1', '2', '4', '8', '16', '32':
        run = mkvx('check', '--late', '500us', '--time-limit', limit, '--format', 'json', sample)
        checked = run.json()['files'][0]
        assert run.code == EXITS['undecided'] == 6 and checked['verdict'] == 'undecided' and limit + ' s' in checked['reason']
        assert [(f['code'], f['weight']) for f in checked['findings']] == [('time_limit', 'loss')]
        if checked['tracks']:
            break
    assert checked['tracks'][0]['mime'] == 'video/avc'


def test_interruption_prints_what_was_found(binary, serve, sample):
    server = serve(sample.read_bytes(), gate=range(100000, 170000))
    with subprocess.Popen([binary, 'check', '--jobs', '1', sample, *[server.url('held')] * 2], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, text=True) as run:
        assert run.stdout.readline().startswith(str(sample))
        server.wait_until_held()
        run.send_signal(signal.SIGINT)
        out, err = run.communicate(timeout=60)
    assert run.returncode == 130 and 'interrupted' in err
    assert 'VERDICT' not in out and 'held' not in out


def test_progress_as_json(mkvx, sample):
    told = [json.loads(line)['progress'] for line in
            mkvx('check', '--jobs', '1', '--progress', 'json', '--late', '250us', *[sample] * 2).err.splitlines()]
    assert told and all(t['files_total'] == 2 and 0 <= t['bytes'] <= t['bytes_total'] for t in told)
    assert [t['bytes'] for t in told] == sorted(t['bytes'] for t in told)
