"""Seeks in files that other programs mux, on every track, forwards and backwards, against the rule and against the key
frames that ffprobe lists."""
from pathlib import Path

import ebml
import ffmpeg
import landing
import pytest
import rules

VIDEO = ('testsrc2=size=96x64:rate=25:duration=10',
         '-c:v libx264 -preset veryfast -bf 2 -g 40 -keyint_min 10 -sc_threshold 0 -threads 1 -pix_fmt yuv420p', 'mkv')
AUDIO = ('sine=frequency=440:sample_rate=44100:duration=10', '-c:a aac -b:a 48k', 'm4a')
TARGETS = 200


@pytest.fixture(scope='module')
def streams(mux):
    """Ten seconds of H.264 with a key frame every 1.6 s, and of AAC."""
    return [mux.stream(VIDEO), mux.stream(AUDIO)]


def no_cues(layout):
    return layout.doc.count(ebml.CUES) == 0


def cues_of(number):
    return lambda layout: {n for c in layout.cues for _, ps in c for n, _ in ps} == {number}


SHORT = ('--cluster-length', '700ms')
# name -> (how it is muxed, what is peculiar about it)
FILES = {
    'mkvmerge': (lambda mux, s, out: mux.mkvmerge(out, s), lambda l: not no_cues(l)),
    'mkvmerge, short Clusters': (lambda mux, s, out: mux.mkvmerge(out, s, *SHORT),
                                 lambda l: len(l.order) > 12),
    'mkvmerge, without Cues': (lambda mux, s, out: mux.mkvmerge(out, s, '--no-cues', *SHORT), no_cues),
    'mkvmerge, Cues of the audio only':
        (lambda mux, s, out: mux.mkvmerge(out, s[1:], *SHORT, '--cues', '0:none', s[0], '--cues', '0:all'), cues_of(2)),
    'mkvmerge, Cues of every video frame':
        (lambda mux, s, out: mux.mkvmerge(out, s[1:], *SHORT, '--cues', '0:all', s[0], '--cues', '0:none'), lambda l: len(l.cues[0]) > 200),
    'mkvmerge, audio in front': (lambda mux, s, out: mux.mkvmerge(out, s[::-1]), lambda l: l.doc.tracks[0].type == 2),
    'mkvmerge, audio alone': (lambda mux, s, out: mux.mkvmerge(out, s[1:]), lambda l: len(l.doc.tracks) == 1),
    'ffmpeg': (lambda mux, s, out: mux.ffmpeg(out, s), lambda l: not no_cues(l)),
    'ffmpeg, short Clusters': (lambda mux, s, out: mux.ffmpeg(out, s, '-cluster_time_limit', '700'),
                               lambda l: len(l.order) > 12),
    'ffmpeg, Cues in front': (lambda mux, s, out: mux.ffmpeg(out, s, '-cues_to_front', '1'),
                              lambda l: l.doc.first(ebml.CUES) < l.doc.first(ebml.CLUSTER)),
    'ffmpeg, a live stream': (lambda mux, s, out: mux.ffmpeg(out, s, '-live', '1', '-cluster_time_limit', '700', piped=True),
                              no_cues),
}


def grid(end_us):
    """Evenly from the start to beyond the end; some targets fall on frames, most do not."""
    return [end_us * 102 // 100 * i // (TARGETS - 1) for i in range(TARGETS)]


def seek(mkvx, path, track, targets):
    lines = mkvx('seek', path, '--track', track, '--format', 'jsonl', *(word for t in targets for word in ('--to', f'{t}us'))).lines()
    assert [line['target_us'] for line in lines] == list(targets)
    return lines


def key_times(path, doc, number):
    """As ffmpeg lists the key frames, in microseconds."""
    index = [t.number for t in doc.tracks].index(number)
    track = doc.tracks[index]
    delay = int(track.codec_delay_ns / doc.scale + 0.5)
    return {rules.microseconds(doc, p.pts + delay) for p in ffmpeg.packets(path, len(doc.tracks))[index] if p.key}


@pytest.mark.parametrize('name', FILES)
def test_grid(mkvx, mux, streams, name):
    make, peculiar = FILES[name]
    path = make(mux, streams, 'seek-%d.mkv' % list(FILES).index(name))
    layout = landing.read(path)
    doc = layout.doc
    assert peculiar(layout)
    targets = grid(int(layout.end_ticks * doc.scale) // 1000 or 10000000)
    for index, track in enumerate(rules.offered(doc)):
        keys = key_times(path, doc, track.number)
        landed = 0
        for line in seek(mkvx, path, index, targets + targets[::-1]):
            what = 'track %d, target %d' % (index, line['target_us'])
            block = landing.land(layout, track, line['target_us'])
            if block is None:
                assert line['landed'] is None, what
                continue
            unit = layout.unit_of[id(block)]
            expected = {'time_us': unit.time_us, 'sync': unit.sync, 'size': unit.size, 'sha1': unit.sha1}
            assert line['landed'] == expected, what
            assert not unit.sync or unit.time_us in keys, what
            assert line['reads'] > 0, what
            landed += 1
        assert landed >= 2 * TARGETS * 9 // 10


def test_video_lands_on_the_last_key_frame_in_front(mkvx, mux, streams):
    """What a viewer expects, without looking at Cues or Clusters: with a Cue per key frame, and Clusters that begin with
    one, a seek lands on the last key frame that is not behind the target."""
    path = mux.mkvmerge('viewer.mkv', streams[:1])
    layout = landing.read(path)
    keys = sorted(key_times(path, layout.doc, 1))
    assert len(keys) > 5
    for line in seek(mkvx, path, 0, [k + d for k in keys[:-1] for d in (1, 500000, 1599000)]):
        assert line['landed']['time_us'] == max(k for k in keys if k <= line['target_us'])


def test_clock_times_and_every_track(mkvx, mux, streams):
    path = mux.mkvmerge('clock.mkv', streams)
    lines = mkvx('seek', path, '--to', '00:00:04.250', '--to', '-1us', '--format', 'jsonl').lines()
    assert [(x['track'], x['target_us']) for x in lines] == [(0, 4250000), (0, -1), (1, 4250000), (1, -1)]
    assert lines[0]['landed'] and lines[1]['landed'] is None


def test_late(mkvx, mux, streams):
    """A player that is late is taken to the next sync point, if it lies within its lateness and a tenth of a second."""
    path = mux.ffmpeg('late.mkv', streams[:1])
    layout = landing.read(path)
    units = rules.frame_units(layout.doc, layout.doc.tracks[0])
    points = sorted(landing.us(layout, ticks) for ticks, _ in layout.cues[0])
    jumps = 0
    for at in range(0, len(units), 17):
        due = units[at].time_us
        # A unit's own sync point is behind it once a later unit was read.
        seen = max(u.time_us for u in units[:at + 1])
        following = next((p for p in points if p >= seen), None)
        for by in (400000, 400001, 900000, 3000000):
            got = mkvx('late', path, '--track', 0, '--at', at, '--by', by, '--format', 'jsonl').json()
            assert got['due_us'] == due
            jump = by > 400000 and following is not None and due < following <= due + by + 100000
            jumps += jump
            expected = units[at].time_us
            if jump:
                expected = next(u.time_us for u in units if u.sync and u.time_us >= following)
            assert got['landed']['time_us'] == expected, (at, by)
    assert jumps > 4


@pytest.mark.parametrize('name, source', [('mkvmerge', 'cues'), ('mkvmerge, without Cues', 'scan'),
                                          ('mkvmerge, Cues of the audio only', 'cues')])
def test_index(mkvx, mux, streams, name, source):
    path = FILES[name][0](mux, streams, 'index.mkv')
    layout = landing.read(path)
    got = mkvx('index', path, '--format', 'json', '--coarse', '1500000').json()
    points = [point for cues in layout.cues for point in cues]
    master = rules.master_track(layout.doc).number
    entries = sorted((landing.us(layout, ticks), positions[0][1]) for ticks, positions in points)
    assert got['source'] == source and got['points'] == len(points) and got['master_track'] == master
    assert sorted((e['time_us'], e['position']) for e in got['entries']) == entries
    assert [e['time_us'] for e in got['entries']] == sorted(e[0] for e in entries)
    assert got['master_points'] == sum(any(n == master for n, _ in ps) for _, ps in points)
    times = [0] + [e[0] for e in entries] + [got['duration_us']]
    gaps = [(a, b) for a, b in zip(times, times[1:]) if b - a > 1500000]
    assert [(g['from_us'], g['to_us']) for g in got['coarse']] == gaps


def test_index_of_a_file_without_clusters(mkvx, mux, streams, tmp_path):
    source = mux.mkvmerge('whole.mkv', streams[:1])
    cut = next(e for e in ebml.read(source).level_1 if e.id == ebml.CLUSTER).start
    path = tmp_path / 'head.mkv'
    path.write_bytes(Path(source).read_bytes()[:cut - 12])
    got = mkvx('index', path, '--format', 'json').json()
    assert got['entries'] == [] and got['points'] == 0
