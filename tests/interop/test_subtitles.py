"""Subtitles travel with the master track: who gets which event, when, and how events are joined."""
import ebml
import pytest
import rewriting
import rules

SPARSE = [(100, 300, 'one'), (400, 650, 'two\nlines'), (800, 1100, 'three')]
# Several begin between two pictures, which are 40 ms apart.
CROWDED = [(70, 900, 'first'), (80, 800, 'second'), (100, 700, 'third'), (500, 600, 'fourth'), (510, 610, 'fifth')]
COMMAS = [(70, 900, 'a, b, c, d, e, f, g, h, i, j'), (80, 800, 'plain'), (100, 700, 'plain, too')]


def subtitle_counts(doc):
    return [(sum(b.track == t.number for b in doc.blocks), len(rules.units(doc, t)))
            for t in doc.tracks if t.type == ebml.SUBTITLE]


# streams, subtitle inputs as (kind, lines), [(events in the file, records delivered)] per subtitle track
CASES = [
    ('srt', ['h264', 'aac'], [('srt', SPARSE)], [(3, 3)]),
    ('srt that crowds between two pictures', ['h264'], [('srt', CROWDED)], [(5, 5)]),
    ('srt text with eight commas is taken for fields', ['h264'], [('srt', COMMAS)], [(3, 2)]),
    ('ass', ['h264', 'aac'], [('ass', SPARSE)], [(3, 3)]),
    ('ass events between two pictures are merged', ['h264'], [('ass', CROWDED)], [(5, 2)]),
    ('two srt tracks: the first in the queue is served', ['h264'], [('srt', SPARSE), ('srt', CROWDED)],
     [(3, 3), (5, 5)]),
    ('two ass tracks that alternate', ['h264'], [('ass', CROWDED), ('ass', CROWDED)], [(5, 5), (5, 5)]),
    ('ass and srt', ['h264', 'mp3'], [('ass', CROWDED), ('srt', CROWDED)], [(5, 5), (5, 5)]),
    ('collected by the audio track', ['mp3'], [('srt', SPARSE)], [(3, 3)]),
    ('collected by laced Vorbis', ['vorbis'], [('srt', SPARSE), ('ass', CROWDED)], [(3, 3), (5, 3)]),
    ('nothing to collect them with', [], [('srt', SPARSE)], [(3, 0)]),
    ('a dropped track in front shifts the index', ['h264', 'opus'], [('srt', SPARSE)], [(3, 0)]),
    # Pictures between the events, but no audio block: with the audio as the master track they would be merged.
    ('the video behind the audio is the master', ['aac', 'h264'], [('ass', [(70, 150, 'one'), (170, 300, 'two')])],
     [(2, 2)]),
]


@pytest.mark.parametrize('streams, subtitles, counts', [row[1:] for row in CASES], ids=[row[0] for row in CASES])
def test_subtitles(mux, check, streams, subtitles, counts):
    inputs = [getattr(mux, kind)('lines-%d.%s' % (i, kind), lines) for i, (kind, lines) in enumerate(subtitles)]
    doc = check(mux.mkvmerge('subtitles.mkv', streams + inputs))
    assert subtitle_counts(doc) == counts


def test_master_track_that_is_not_offered(mux, check):
    """The TrackNumber fits the index, and yet nothing reads past the events."""
    doc = check(mux.mkvmerge('no-master.mkv', [mux.srt('first.srt', SPARSE), 'vp8', 'mp3']))
    assert doc.tracks[0].type == ebml.SUBTITLE and subtitle_counts(doc) == [(3, 0)]


def test_track_number_that_does_not_fit_the_index(mux, check):
    """A record goes to the track whose index is its TrackNumber minus one: to nobody, or to the wrong one."""
    lines = [mux.srt('a.srt', SPARSE), mux.srt('b.srt', CROWDED)]
    source = mux.mkvmerge('numbers.mkv', ['h264'] + lines)
    doc = check(rewriting.Rewriter(source, renumber={2: 3, 3: 4}).write(mux.path('shifted.mkv')))
    assert subtitle_counts(doc) == [(3, 0), (5, 3)]


def test_subtitles_muxed_by_ffmpeg(mux, check):
    lines = [mux.srt('f.srt', SPARSE), mux.ass('f.ass', CROWDED)]
    doc = check(mux.ffmpeg('subtitles-f.mkv', ['h264', 'aac'] + lines))
    assert [t.codec_id for t in doc.tracks[2:]] == ['S_TEXT/UTF8', 'S_TEXT/ASS']


def test_merged_event_keeps_the_earlier_text_behind_the_later(mux, check):
    """The expected bytes are written out here, not computed."""
    lines = mux.ass('merge.ass', [(200, 600, 'Hello'), (205, 900, 'World')])
    doc = check(mux.mkvmerge('merge.mkv', ['h264', lines]))
    unit, = rules.units(doc, doc.tracks[1])
    assert unit == rules.unit(200000, True, b'1,0,Default,,0,0,0,,World\nHello', 900000)


def test_webvtt_is_not_offered(mux, check):
    lines = mux.text('lines.vtt', 'WEBVTT\n\n00:00.100 --> 00:00.500\nwords\n')
    doc = check(mux.mkvmerge('vtt.mkv', ['h264', lines]))
    assert [t.codec_id for t in doc.tracks][1] == 'S_TEXT/WEBVTT' and len(rules.offered(doc)) == 1
