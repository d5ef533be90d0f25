"""The comparisons that files go through."""
import hashlib

import ebml
import ffmpeg
import rules


def sha1(data):
    return hashlib.sha1(data).hexdigest()


def oracles_agree(path):
    """ebml.py against ffmpeg, frame by frame: without this the former proves nothing about the latter's packets."""
    doc = ebml.read(path)
    assert doc.tracks and doc.blocks
    for track, packets in zip(doc.tracks, ffmpeg.packets(path, len(doc.tracks))):
        if rules.mime_and_tag(track)[0] is None:
            continue            # nothing will be listed of it; and ffmpeg rebuilds some of those packets
        blocks = [b for b in doc.blocks if b.track == track.number]
        what = 'track %d, %s' % (track.number, track.codec_id)
        frames = [(len(f), sha1(f)) for b in blocks for f in b.frames]
        assert frames == [(p.size, p.sha1) for p in packets], what
        delay = int(track.codec_delay_ns / doc.scale + 0.5)       # as ffmpeg rounds it
        at = 0
        for b in blocks:
            if packets[at].pts is not None and track.type != ebml.SUBTITLE:
                assert packets[at].pts == b.ticks - delay, '%s, frame %d' % (what, at)
            if track.type == ebml.VIDEO:
                assert packets[at].key == b.key, '%s, frame %d' % (what, at)
            at += len(b.frames)
    return doc


def listed_units(mkvx, path):
    """{(index, number): [Unit]}, and the order in which the tracks came."""
    result = {}
    for u in mkvx('packets', '--format', 'jsonl', path).lines():
        result.setdefault((u['track'], u['number']), []).append(
            rules.Unit(u['time_us'], u['sync'], u['size'], u['sha1'], u.get('end_us')))
    return result


def compare_units(what, got, expected):
    for i, (g, e) in enumerate(zip(got, expected)):
        assert g == e, '%s, unit %d of %d' % (what, i, len(expected))
    assert len(got) == len(expected), what


def units_match(mkvx, path, doc):
    got = listed_units(mkvx, path)
    assert list(got) == sorted(got), 'tracks in index order'
    expected = {(i, t.number): (t, rules.units(doc, t)) for i, t in enumerate(rules.offered(doc))}
    assert set(got) == {k for k, (_, units) in expected.items() if units}
    for key, (track, units) in expected.items():
        compare_units('track %d, %s' % (track.number, track.codec_id), got.get(key, []), units)


# To the framework; the rest of a track is what the file and its stream say.
TOLD = {'index', 'number', 'type', 'mime', 'width', 'height', 'sample_rate', 'channels', 'language', 'duration_us', 'bit_rate',
        'thumbnail_us'}


def info_matches(mkvx, path, doc):
    info = mkvx('info', '--format', 'json', path).json()
    assert info['container_mime'] == rules.container_mime(doc)
    tracks = rules.offered(doc)
    assert [t['number'] for t in info['tracks']] == [t.number for t in tracks]
    for i, (got, track) in enumerate(zip(info['tracks'], tracks)):
        got_config = got.pop('config', {})
        assert {k: v for k, v in got.items() if k in TOLD} == rules.track_info(doc, i, track)
        expected = rules.config(doc, track)
        assert {k: True if expected.get(k) is True else v for k, v in got_config.items()} == expected


def check(mkvx, path):
    """All of it; returns the document, so that a test can insist on the peculiarity that the file was made for."""
    doc = oracles_agree(path)
    units_match(mkvx, path, doc)
    info_matches(mkvx, path, doc)
    return doc
