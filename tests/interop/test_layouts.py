"""The same kinds of streams in every layout that the muxers can write: lacing, encodings, order and size of the
elements around the blocks. Each test insists that its file has the peculiarity it is named after."""
import ebml
import muxing
import pytest
import rewriting

AV = ['h264', 'aac']
AUDIO = ['aac', 'mp3', 'ac3', 'flac', 'vorbis', 'mp2']


def lacings(doc):
    return {b.lacing for b in doc.blocks}


def no_cues(doc):
    return doc.count(ebml.CUES) == 0


# --- lacing -------------------------------------------------

LACING = [
    ('as the muxer sees fit', [], lambda d: lacings(d) & {1, 2, 3}),
    ('Xiph', ['--engage', 'lacing_xiph'], lambda d: lacings(d) - {0} == {1}),
    ('EBML', ['--engage', 'lacing_ebml'], lambda d: lacings(d) - {0} == {3}),
    ('in BlockGroups', ['--engage', 'no_simpleblocks'], lambda d: all(b.grouped for b in d.blocks)),
    ('none', ['--disable-lacing'], lambda d: lacings(d) == {0}),
    ('with zlib', ['zlib'], lambda d: lacings(d) != {0} and all(t.encodings for t in d.tracks)),
]


@pytest.mark.parametrize('options, peculiar', [row[1:] for row in LACING], ids=[row[0] for row in LACING])
def test_laced_audio(mux, check, options, peculiar):
    per_input = []
    if options == ['zlib']:
        options, per_input = [], ['--compression', '0:zlib']
    doc = check(mux.mkvmerge('laced.mka', AUDIO, *options, per_input=per_input))
    assert len(doc.tracks) == len(AUDIO) and peculiar(doc)


def test_fixed_size_laces(mux, check):
    doc = check(mux.mkvmerge('fixed.mka', ['ac3_48k']))
    assert 2 in lacings(doc)


# --- content encodings -------------------------------------------------

def test_zlib_on_every_track(mux, check):
    lines = mux.srt('zlib.srt', [(100, 400, 'first'), (500, 900, 'second')])
    doc = check(mux.mkvmerge('zlib.mkv', AV + ['vorbis', lines], per_input=['--compression', '-1:zlib']))
    assert all([e.algorithm for e in t.encodings] == [0] for t in doc.tracks)


@pytest.mark.parametrize('stream, count', [('mpeg4', 3), ('mp3', 2), ('ac3', 2), ('vorbis', 0)])
def test_stripped_headers(mux, check, stream, count):
    whole = mux.mkvmerge('whole.mkv', [stream], '--engage', 'lacing_xiph')
    doc = check(rewriting.Rewriter(whole, strip={1: count}).write(mux.path('stripped.mkv')))
    assert [len(e.settings) for e in doc.tracks[0].encodings] == [count]
    assert doc.blocks == ebml.read(whole).blocks
    assert stream == 'mpeg4' or any(len(b.frames) > 1 for b in doc.blocks)


# --- order, number and size of the level-1 elements -------------------------------------------------

def behind_clusters(element_id):
    return lambda d: d.first(element_id) > d.first(ebml.CLUSTER)


def many_clusters(doc):
    return doc.count(ebml.CLUSTER) > 10


FFMPEG = [
    ('Cues at the end', [], behind_clusters(ebml.CUES)),
    ('Cues in front', ['-cues_to_front', '1'], lambda d: d.first(ebml.CUES) < d.first(ebml.CLUSTER)),
    ('live', ['-live', '1'], lambda d: no_cues(d) and d.segment_unknown_size),
    ('many small clusters', ['-cluster_time_limit', '40'], many_clusters),
    ('one frame per cluster', ['-cluster_size_limit', '1'], many_clusters),
    ('no checksums', ['-write_crc32', '0'], lambda d: True),
]


@pytest.mark.parametrize('options, peculiar', [row[1:] for row in FFMPEG], ids=[row[0] for row in FFMPEG])
def test_ffmpeg_layout(mux, check, options, peculiar):
    doc = check(mux.ffmpeg('layout.mkv', AV, *options))
    assert peculiar(doc)


@pytest.mark.parametrize('options', [[], ['-cluster_time_limit', '100'], ['-live', '1', '-cluster_time_limit', '100']],
                         ids=['plain', 'small clusters', 'live'])
def test_ffmpeg_into_a_pipe(mux, check, options):
    doc = check(mux.ffmpeg('pipe.mkv', AV, *options, piped=True))
    assert doc.segment_unknown_size


def test_clusters_of_unknown_size_in_front_of_other_elements(mux, check):
    """A recording whose end was written all the same: Cues and Tags follow the last open Cluster."""
    known = mux.ffmpeg('known.mkv', AV, '-cluster_time_limit', '200', '-metadata', 'comment=end')
    doc = check(rewriting.open_clusters(known, mux.path('open-clusters.mkv')))
    clusters = [e for e in doc.level_1 if e.id == ebml.CLUSTER]
    assert len(clusters) > 3 and all(e.unknown_size for e in clusters)
    assert doc.blocks == ebml.read(known).blocks and behind_clusters(ebml.CUES)(doc)


MKVMERGE = [
    ('plain', [], behind_clusters(ebml.CUES)),
    ('no Cues', ['--no-cues'], no_cues),
    ('two SeekHeads', ['--clusters-in-meta-seek'], lambda d: d.count(ebml.SEEK_HEAD) == 2),
    ('no SeekHead', ['--engage', 'no_meta_seek'], lambda d: d.count(ebml.SEEK_HEAD) == 0),
    ('a second copy of the headers', ['--engage', 'write_headers_twice'], lambda d: d.count(ebml.TRACKS) == 2),
    ('BlockGroups only', ['--engage', 'no_simpleblocks'],
     lambda d: all(b.grouped for b in d.blocks) and not all(b.key for b in d.blocks)),
    ('small clusters without Cues', ['--no-cues', '--cluster-length', '100ms'],
     lambda d: no_cues(d) and many_clusters(d)),
    ('two blocks per cluster', ['--cluster-length', '2'], many_clusters),
    ('coarse time scale', ['--timestamp-scale', '3333333'], lambda d: d.scale == 3333333),
    ('fine time scale', ['--timestamp-scale', '50001'], lambda d: d.scale == 50001),
    ('sample-exact time scale', ['--timestamp-scale', '-1'], lambda d: d.scale < 100000),
]


@pytest.mark.parametrize('options, peculiar', [row[1:] for row in MKVMERGE], ids=[row[0] for row in MKVMERGE])
def test_mkvmerge_layout(mux, check, options, peculiar):
    doc = check(mux.mkvmerge('layout.mkv', AV, *options))
    assert peculiar(doc)


def test_chapters_attachments_and_tags(mux, check):
    chapters = mux.text('chapters.txt', 'CHAPTER01=00:00:00.000\nCHAPTER01NAME=One\nCHAPTER02=00:00:00.600\nCHAPTER02NAME=Two\n')
    note = mux.text('note.txt', 'an attached text\n' * 1000)
    doc = check(mux.mkvmerge('extras.mkv', AV, '--chapters', chapters, '--attach-file', note, '--title', 'Extras'))
    assert doc.count(ebml.CHAPTERS) == doc.count(ebml.ATTACHMENTS) == doc.count(ebml.TAGS) == 1


def test_tracks_rewritten_behind_the_clusters(mux, check):
    """A header editor that finds no room moves the Tracks element to the end of the file."""
    path = mux.mkvmerge('moved.mkv', AV)
    muxing.run('mkvpropedit', '--quiet', path, '--edit', 'track:a1', '--set', 'name=' + 'long name ' * 400)
    doc = check(path)
    assert behind_clusters(ebml.TRACKS)(doc)


# --- tracks -------------------------------------------------

def test_track_numbers_around_127(mux, check):
    short = mux.ffmpeg('short.mp3', ['mp3'], '-t', '0.2')
    doc = check(mux.ffmpeg('many.mka', [short], *['-map', '0:a'] * 139))
    assert len(doc.tracks) == 140 and {b.track for b in doc.blocks if b.all_ones} == {127}


def test_large_track_numbers(mux, check):
    renumber = {1: 300, 2: 70000}
    doc = check(rewriting.Rewriter(mux.mkvmerge('small.mkv', AV), renumber=renumber).write(mux.path('large.mkv')))
    assert [t.number for t in doc.tracks] == [300, 70000]


LANGUAGES = [
    ('by Language', ['--language', '0:ger']),
    ('Chinese', ['--language', '0:chi']),
    ('Name wins', ['--language', '0:ger', '--track-name', '0:Commentary']),
    ('Name beyond ASCII', ['--track-name', '0:Gespräch über Bäume.']),
]


@pytest.mark.parametrize('options', [row[1] for row in LANGUAGES], ids=[row[0] for row in LANGUAGES])
def test_language(mux, check, options):
    check(mux.mkvmerge('language.mkv', AV, per_input=options))


def test_delayed_and_trimmed_tracks(mux, check):
    doc = check(mux.mkvmerge('delayed.mkv', AV, per_input=['--sync', '0:1234']))
    assert min(b.ticks for b in doc.blocks) >= 1234


def test_the_committed_sample(check, sample):
    doc = check(str(sample))
    assert [t.type for t in doc.tracks] == [ebml.VIDEO, ebml.AUDIO, ebml.SUBTITLE]
