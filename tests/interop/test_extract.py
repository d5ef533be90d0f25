"""Each track that mkvx extract writes has to open elsewhere without a complaint and hold what the file held: the same
packets where the form keeps them apart from their headers, the same pictures and samples in any case."""
import json
import pathlib
import subprocess

import muxing
import pytest

SAMPLE = pathlib.Path(__file__).parents[2] / 'samples/sample.mkv'


def run(*command):
    return subprocess.run([str(c) for c in command], stdout=subprocess.PIPE, stderr=subprocess.PIPE)


def extract(mkvx, path, track, out):
    done = run(mkvx, 'extract', path, '--track', track, '-o', out)
    assert done.returncode == 0, done.stderr.decode()
    assert done.stderr == b''
    return done.stdout.decode()


def probe(path, *options):
    """What ffprobe says, insisting that it says nothing on stderr."""
    done = run('ffprobe', '-v', 'error', '-show_packets', '-show_streams', '-show_data_hash', 'sha160', '-of', 'json',
               *options, path)
    assert done.returncode == 0 and done.stderr == b'', done.stderr.decode()
    return json.loads(done.stdout)


def packets(path, stream=0):
    return [(int(p['size']), p['data_hash']) for p in probe(path, '-select_streams', str(stream))['packets']]


def decoded(path, stream, *options):
    """(frames or bytes of sound, hash) of everything in one stream, with no sample cut off at the ends."""
    done = run('ffmpeg', '-v', 'error', '-flags2', '+skip_manual', '-i', path, '-map', '0:%d' % stream, *options,
               '-f', 'framehash', '-hash', 'md5', '-')
    assert done.returncode == 0 and done.stderr == b'', done.stderr.decode()
    rows = [line.split(',') for line in done.stdout.decode().splitlines() if line and line[0] != '#']
    return [(int(r[4]), r[5].strip()) for r in rows]


VIDEO = ('-fps_mode', 'passthrough', '-enc_time_base', '-1', '-c:v', 'rawvideo')
SOUND = ('-c:a', 'pcm_s32le')

# stream -> (codec that ffprobe finds, packets come out as they are, pictures or sound)
STREAMS = {
    'h264': ('h264', False, VIDEO),
    'hevc': ('hevc', False, VIDEO),
    'mpeg4': ('mpeg4', False, VIDEO),
    'xvid': ('mpeg4', False, VIDEO),
    'mpeg2': ('mpeg2video', False, VIDEO),
    'mpeg1': ('mpeg1video', False, VIDEO),
    'vp9': ('vp9', True, VIDEO),
    'aac': ('aac', False, SOUND),
    'mp3': ('mp3', True, SOUND),
    'mp2': ('mp2', True, SOUND),
    'ac3': ('ac3', True, SOUND),
    'dts': ('dts', True, SOUND),
    'flac': ('flac', True, SOUND),
    'vorbis': ('vorbis', True, SOUND),
    'pcm_s16le': ('pcm_s16le', False, SOUND),
    'pcm_s24le': ('pcm_s24le', False, SOUND),
    'pcm_s16be': ('pcm_s16le', False, SOUND),
    'pcm_alaw': ('pcm_alaw', False, SOUND),
    'pcm_mulaw': ('pcm_mulaw', False, SOUND),
    'adpcm_ms': ('adpcm_ms', False, SOUND),
    'adpcm_ima': ('adpcm_ima_wav', False, SOUND),
    'wmav2': ('wmav2', False, SOUND),
}


def whole(frames):
    return sum(size for size, _ in frames)


@pytest.mark.parametrize('name', STREAMS)
def test_codec(mkvx, mux, name):
    codec, keeps_packets, kind = STREAMS[name]
    path = mux.ffmpeg(name + '.mkv', [name])
    out = mux.path(name + '.out')
    extract(mkvx, path, 0, out)
    streams = probe(out)['streams']
    assert [s['codec_name'] for s in streams] == [codec]
    if keeps_packets:
        assert packets(out) == packets(path)
    if kind is VIDEO:
        assert decoded(out, 0, *kind) == decoded(path, 0, *kind)
    else:
        # Frames of sound may be cut elsewhere: all samples behind each other count.
        assert samples(out) == samples(path) and len(samples(path)) > 40000


def samples(path):
    done = run('ffmpeg', '-v', 'error', '-flags2', '+skip_manual', '-i', path, '-map', '0:0', *SOUND, '-f', 's32le', '-')
    assert done.returncode == 0 and done.stderr == b'', done.stderr.decode()
    return done.stdout


def test_laced_audio_comes_apart_again(mkvx, mux):
    for name in ('mp2', 'ac3', 'vorbis'):
        path = mux.mkvmerge(name + '-laced.mka', [name], '--engage', 'lacing_xiph')
        out = mux.path(name + '-laced.out')
        extract(mkvx, path, 0, out)
        assert packets(out) == packets(path)


def test_times(mkvx, mux):
    """IVF keeps the times, Ogg counts samples: both as the file had them."""
    def times(path):
        return [float(p['pts_time']) for p in probe(path)['packets']]
    vp9, ivf = mux.ffmpeg('times.webm', ['vp9']), mux.path('times.ivf')
    extract(mkvx, vp9, 0, ivf)
    assert times(ivf) == times(vp9)
    vorbis, ogg = mux.ffmpeg('times.mka', ['vorbis']), mux.path('times.ogg')
    extract(mkvx, vorbis, 0, ogg)
    got = probe(ogg)
    rate, total = int(got['streams'][0]['sample_rate']), len(samples(ogg)) // 4
    assert abs(int(got['streams'][0]['duration_ts']) - total) < rate // 10


LINES = [(500, 1400, 'First'), (1500, 2750, 'two\nlines'), (3000, 4120, 'with, commas')]


def test_srt(mkvx, mux):
    path = mux.mkvmerge('srt.mkv', ['h264', mux.srt('in.srt', LINES)])
    out = mux.path('out.srt')
    extract(mkvx, path, 1, out)
    assert packets(out) == packets(mux.path('in.srt'))
    assert pathlib.Path(out).read_text() == pathlib.Path(mux.path('in.srt')).read_text()


def dialogues(path):
    return [line for line in pathlib.Path(path).read_text().splitlines() if line.startswith('Dialogue:')]


def test_ass(mkvx, mux):
    lines = [(start, end, text.replace('\n', '\\N')) for start, end, text in LINES]
    source = mux.ass('in.ass', lines)
    path = mux.mkvmerge('ass.mkv', ['h264', source])
    out = mux.path('out.ass')
    extract(mkvx, path, 1, out)
    assert probe(out)['streams'][0]['codec_name'] == 'ass'
    # Two events lie behind the last picture, and with none between them arrive as one.
    joined = '0:00:01.50,0:00:04.12,Default,,0,0,0,,with, commas\\Ntwo\\Nlines'
    assert dialogues(out) == [dialogues(source)[0], 'Dialogue: 0,' + joined]
    head = pathlib.Path(out).read_text().split('Dialogue:')[0]
    assert head.split() == muxing.ASS_HEAD.split()


def test_sample(mkvx, tmp_path):
    info = json.loads(run(mkvx, 'info', SAMPLE, '--format', 'json').stdout)
    for track in info['tracks']:
        out = tmp_path / str(track['index'])
        assert str(out) in extract(mkvx, SAMPLE, track['index'], out)
        assert probe(out)['packets']


# --- what cannot be written --------------------------------------------

def refused(mkvx, path, track, out):
    done = run(mkvx, 'extract', path, '--track', track, '-o', out)
    assert done.returncode == 1 and done.stdout == b''
    assert not pathlib.Path(out).exists()
    return done.stderr.decode()


def test_refusals(mkvx, mux):
    out = mux.path('refused')
    assert 'video/mixer' in refused(mkvx, mux.ffmpeg('wmv2.mkv', ['wmv2']), 0, out)
    no_master = mux.mkvmerge('no-master.mkv', [mux.srt('r.srt', LINES), 'vp8'])
    assert 'no subtitle can arrive' in refused(mkvx, no_master, 0, out)
    shifted = mux.mkvmerge('shifted.mkv', ['h264', 'opus', mux.srt('s.srt', LINES)])
    assert 'delivers no unit' in refused(mkvx, shifted, 1, out)
    avc = pathlib.Path(mux.ffmpeg('short-lengths.mkv', ['h264']))
    data = avc.read_bytes()
    lengths = data.index(b'\xff\xe1', data.index(b'\x63\xa2'))     # in the CodecPrivate
    avc.write_bytes(data[:lengths] + b'\xfd' + data[lengths + 1:])
    assert '2-byte lengths' in refused(mkvx, avc, 0, out)
