"""What mkvx extract writes of times and texts, as other programs read it, and what it refuses. Codecs are in test_codecs.py."""
from pathlib import Path

import ffmpeg
import muxing


def extract(mkvx, path, track, out):
    run = mkvx('extract', path, '--track', track, '-o', out)
    assert (run.code, run.err) == (0, '')
    ffmpeg.probe(out, is_clean=True)
    return out


def test_times(mkvx, mux):
    """IVF keeps the times, Ogg counts samples: both as the file had them."""
    def times(path):
        return [float(p['pts_time']) for p in ffmpeg.probe(path)['packets']]
    vp9 = mux.ffmpeg('times.webm', ['vp9'])
    assert times(extract(mkvx, vp9, 0, mux.path('times.ivf'))) == times(vp9)
    ogg = extract(mkvx, mux.ffmpeg('times.mka', ['vorbis']), 0, mux.path('times.ogg'))
    stream = ffmpeg.probe(ogg)['streams'][0]
    assert abs(int(stream['duration_ts']) - ffmpeg.decode(ogg).samples) < int(stream['sample_rate']) // 10


LINES = [(500, 1400, 'First'), (1500, 2750, 'two\nlines'), (3000, 4120, 'with, commas')]


def test_srt(mkvx, mux):
    path = mux.mkvmerge('srt.mkv', ['h264', mux.srt('in.srt', LINES)])
    out = extract(mkvx, path, 1, mux.path('out.srt'))
    assert ffmpeg.packets(out) == ffmpeg.packets(mux.path('in.srt'))
    assert Path(out).read_text() == Path(mux.path('in.srt')).read_text()


def dialogues(path):
    return [line for line in Path(path).read_text().splitlines() if line.startswith('Dialogue:')]


def test_ass(mkvx, mux):
    lines = [(start, end, text.replace('\n', '\\N')) for start, end, text in LINES]
    source = mux.ass('in.ass', lines)
    path = mux.mkvmerge('ass.mkv', ['h264', source])
    out = extract(mkvx, path, 1, mux.path('out.ass'))
    assert ffmpeg.probe(out)['streams'][0]['codec_name'] == 'ass'
    # Two events lie behind the last picture, and with none between them arrive as one.
    joined = '0:00:01.50,0:00:04.12,Default,,0,0,0,,with, commas\\Ntwo\\Nlines'
    assert dialogues(out) == [dialogues(source)[0], 'Dialogue: 0,' + joined]
    head = Path(out).read_text().split('Dialogue:')[0]
    assert head.split() == muxing.ASS_HEAD.split()


def test_sample(mkvx, mux, sample):
    for track in 0, 1, 2:
        assert ffmpeg.probe(extract(mkvx, sample, track, mux.path(str(track))))['packets']


# --- what cannot be written --------------------------------------------

def refused(mkvx, path, track, out):
    run = mkvx('extract', path, '--track', track, '-o', out)
    assert run.code == 1 and run.out == '' and not Path(out).exists()
    return run.err


def test_refusals(mkvx, mux):
    out = mux.path('refused')
    assert 'video/mixer' in refused(mkvx, mux.ffmpeg('wmv2.mkv', ['wmv2']), 0, out)
    no_master = mux.mkvmerge('no-master.mkv', [mux.srt('r.srt', LINES), 'vp8'])
    assert 'no subtitle can arrive' in refused(mkvx, no_master, 0, out)
    shifted = mux.mkvmerge('shifted.mkv', ['h264', 'opus', mux.srt('s.srt', LINES)])
    assert 'delivers no unit' in refused(mkvx, shifted, 1, out)
    avc = Path(mux.ffmpeg('short-lengths.mkv', ['h264']))
    data = avc.read_bytes()
    lengths = data.index(b'\xff\xe1', data.index(b'\x63\xa2'))     # in the CodecPrivate
    avc.write_bytes(data[:lengths] + b'\xfd' + data[lengths + 1:])
    assert '2-byte lengths' in refused(mkvx, avc, 0, out)
