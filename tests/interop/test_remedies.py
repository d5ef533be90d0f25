"""The commands that check proposes, run as they are printed, on what real muxers made and one fault was put into."""
import bz2
import json
import struct
import subprocess
import zlib
from collections import Counter
from pathlib import Path

import craft
import ebml
import pytest
import rewriting

AV = ['h264', 'mp3']
VTT = 'WEBVTT\n\n00:00.100 --> 00:00.500\nfirst\n\n00:00.600 --> 00:01.000\nsecond\n'
LINES = [(100, 400, 'first'), (500, 900, 'second')]


def whole(mux, *streams):
    return mux.ffmpeg('whole.mkv', streams or AV, '-cluster_time_limit', '200', '-write_crc32', '0')


def patched(mux, change):
    """change(bytearray, document), on a whole file."""
    path = whole(mux)
    data = bytearray(Path(path).read_bytes())
    change(data, ebml.read(path))
    Path(mux.path('patched.mkv')).write_bytes(data)
    return mux.path('patched.mkv')


def renumbered(mux, numbers, *streams):
    return rewriting.Rewriter(whole(mux, *streams), renumber=numbers).write(mux.path('renumbered.mkv'))


def one_track(mux, stream, change_entry=lambda entry: entry, change_data=lambda data: data):
    """A stream with another TrackEntry, or packets stored in another way."""
    path = mux.ffmpeg('one.mkv', [stream], '-write_crc32', '0')
    reader = rewriting.Rewriter(path, renumber={1: 1})
    tracks = next(e for e in reader.doc.level_1 if e.id == ebml.TRACKS)
    entry = next(e for e in ebml.children(reader.data, tracks.start, tracks.end) if e.id == 0xAE)
    packets = mux.packets(stream)[1]
    for packet in packets:
        packet.data = change_data(packet.data)
    return mux.write('changed.mkv', craft.element(0xAE, change_entry(reader.raw(entry))), packets)


def set_at(data, old, new):
    at = bytes(data).index(old)
    data[at:at + len(new)] = new


def break_a_length(data, doc):
    """The second one of a unit of several NALs."""
    unit = next(b.frames[0] for b in doc.blocks if b.track == 1)
    second = 4 + int.from_bytes(unit[:4], 'big')
    data[data.index(unit) + second] = 1


def shorten(data, doc):
    at = data.index(b'\x44\x89\x88', doc.level_1[doc.first(ebml.INFO)].start) + 3
    data[at:at + 8] = struct.pack('>d', 300.0)


def damage(data, doc):
    second = [e for e in doc.level_1 if e.id == ebml.CLUSTER][1]
    data[second.start - 12:second.start] = bytes(12)


def move_cues(data, doc):
    at = data.rindex(b'\x1c\x53\xbb\x6b')
    data[at:at] = bytes(700)


def empty_cues(data, doc):
    cues = doc.level_1[doc.first(ebml.CUES)]
    at = cues.start
    for point in list(ebml.children(data, cues.start, cues.end)):
        data[at], at = 0xEC, point.end


def without(entry, *ids):
    """The TrackEntry's payload without these children."""
    return b''.join(craft.element(e.id, entry[e.start:e.end]) for e in ebml.children(entry, 0, len(entry)) if e.id not in ids)


def private(change):
    """One way to change a TrackEntry: its CodecPrivate becomes change(bytes)."""
    return lambda entry: without(entry, 0x63A2) + craft.private(change(next(
        entry[e.start:e.end] for e in ebml.children(entry, 0, len(entry)) if e.id == 0x63A2)))


def live_with_junk(mux):
    path = mux.ffmpeg('x.mkv', AV, '-cluster_time_limit', '200', piped=True)
    data = bytearray(Path(path).read_bytes())
    at = data.rindex(b'\x1f\x43\xb6\x75')
    data[at:at] = b'\0junk' * 20
    Path(path).write_bytes(data)
    return path


def lead_cues_astray(data, doc):
    at = data.index(b'\xf1', doc.level_1[doc.first(ebml.CUES)].start)
    data[at + 2] += 1


def lead_by_the_sound(data, doc):
    at = data.index(b'\xf7\x81', doc.level_1[doc.first(ebml.CUES)].start)
    while at > 0:
        data[at + 2] = 2
        at = data.find(b'\xf7\x81\1', at)


ZLIB_OF_PRIVATE = craft.element(0x6D80, craft.element(0x6240, craft.uint(0x5032, 2) + craft.element(0x5034, craft.uint(0x4254, 0))))
BZIP = craft.element(0x6D80, craft.element(0x6240, craft.uint(0x5032, 1) + craft.element(0x5034, craft.uint(0x4254, 1))))
# What it is that check finds fault with: (code, how the file is made).
CASES = [
    ('no_cues', lambda mux: mux.ffmpeg('x.mkv', AV, '-cluster_time_limit', '200', piped=True)),
    ('units_cut', lambda mux: patched(mux, break_a_length)),
    ('no_cues', lambda mux: mux.mkvmerge('x.mka', ['flac'], '--no-cues', '--disable-lacing', '--cluster-length', '200ms')),
    ('damaged', lambda mux: patched(mux, damage)),
    ('truncated', lambda mux: patched(mux, lambda data, doc: data.__delitem__(slice(-9000, None)))),
    ('cues_astray', lambda mux: patched(mux, lead_cues_astray)),
    ('cues_miss_master', lambda mux: patched(mux, lead_by_the_sound)),
    ('doctype_too_new', lambda mux: patched(mux, lambda data, doc: set_at(data, b'\x42\x85\x81\x02', b'\x42\x85\x81\x03'))),
    ('duplicate_number', lambda mux: renumbered(mux, {2: 1}, 'mp3', 'mp3')),
    ('subtitle_number', lambda mux: renumbered(mux, {3: 4}, *AV, mux.srt('x.srt', LINES))),
    ('no_doctype', lambda mux: patched(mux, lambda data, doc: set_at(data, b'\x42\x82\x88matroska', b'\xec\x89' + bytes(9)))),
    ('damaged', live_with_junk),
    ('events_merged', lambda mux: mux.ffmpeg('x.mkv', [*AV, mux.ass('x.ass', [(100, 400, 'a'), (110, 400, 'b')])])),
    ('duration_cut', lambda mux: patched(mux, shorten)),
    ('track_time_scale', lambda mux: one_track(mux, 'mp3', lambda entry: entry + craft.real(0x23314F, 2.0))),
    ('encoding_unsupported', lambda mux: one_track(mux, 'mp3', lambda entry: entry + BZIP, bz2.compress)),
    ('size_damaged', lambda mux: patched(mux, lambda data, doc: set_at(data, b'\x18\x53\x80\x67\x01\0', b'\x18\x53\x80\x67\x01\x30'))),
    ('cues_unreached', lambda mux: patched(mux, move_cues)),
    ('cues_empty', lambda mux: patched(mux, empty_cues)),
    ('bad_header', lambda mux: patched(mux, lambda data, doc: set_at(data, b'\x42\x86\x81', b'\0'))),
    ('no_audio_format', lambda mux: one_track(mux, 'mp3', lambda entry: without(entry, 0xE1))),
    ('no_picture_size', lambda mux: one_track(mux, 'h264', lambda entry: without(entry, 0xE0))),
    ('private_encoded', lambda mux: one_track(mux, 'h264', lambda entry: private(zlib.compress)(entry) + ZLIB_OF_PRIVATE)),
    ('aac_no_profile', lambda mux: one_track(mux, 'aac', lambda entry: without(entry, 0x63A2))),
    ('unknown_codec_id', lambda mux: mux.ffmpeg('x.mkv', ['av1', 'opus'])),
    ('unmapped_tag', lambda mux: mux.ffmpeg('x.webm', ['vp8', 'vorbis'])),
    ('pcm_sample_size', lambda mux: one_track(mux, 'pcm_s24le')),
    ('laced_units', lambda mux: mux.mkvmerge('x.mka', ['aac'])),
    ('subtitle_kind', lambda mux: mux.mkvmerge('x.mkv', ['h264', mux.text('x.vtt', VTT)])),
]


def checked(binary, folder, name):
    run = subprocess.run([binary, 'check', '--format', 'json', name], cwd=folder, capture_output=True)
    return json.loads(run.stdout)['files'][0]


def findings(checked):
    return [f for t in checked['tracks'] for f in t['findings'] + [t[k] for k in ['dropped'] if k in t]] + checked['findings']


def codes(binary, folder, name):
    return Counter(f['code'] for f in findings(checked(binary, folder, name)))


@pytest.mark.parametrize('code, make', CASES, ids=[code for code, _ in CASES])
def test_a_proposal_mends_and_brings_nothing_new(mux, mkvx, binary, tmp_path, code, make):
    Path(make(mux)).rename(tmp_path / "it's.mkv")
    proposals = [f for f in findings(checked(binary, tmp_path, "it's.mkv")) if 'command' in f.get('remedy', ())]
    before = codes(binary, tmp_path, "it's.mkv")
    assert code in [f['code'] for f in proposals]
    mended = mkvx('mend', '--format', 'json', tmp_path / "it's.mkv", '-o', tmp_path / 'all.mkv').json()
    assert code in [f['code'] for f in mended['gone']] and {f['weight'] for f in mended['new']} <= {'note'}
    assert sorted(path.name for path in tmp_path.iterdir()) == ['all.mkv', "it's.mkv"]
    for finding in proposals:
        run = subprocess.run(finding['remedy']['command'], cwd=tmp_path, capture_output=True)
        assert run.returncode == 0 or 'mkvmerge' in finding['remedy']['text'] and run.returncode == 1, run.stderr
        after = codes(binary, tmp_path, 'mended.mkv')
        assert after[finding['code']] < before[finding['code']] and after <= before, finding['remedy']
        for made in 'mended.mkv', 'text.vtt', 'text.srt':
            (tmp_path / made).unlink(missing_ok=True)
