"""mkvx decode itself: its outputs, its options, and configurations that are broken."""
from pathlib import Path

import craft
import ebml
import ffmpeg
import pytest
from muxing import bitmap_header, picture, sound, wave_format

TO_RGB = 'scale=flags=bicubic+accurate_rnd+full_chroma_int,format=rgb24'


def decode(mkvx, path, *options):
    return mkvx('decode', '--format', 'json', path, *options).json()['tracks']


@pytest.fixture(scope='module')
def film(mux):
    """Video, sound and a subtitle; the video does not begin with the first track."""
    return mux.mkvmerge('film.mkv', ['flac', 'h264', mux.srt('film.srt', [(100, 900, 'a line')])])


def rgb(path, select=None):
    return ffmpeg.output('ffmpeg', '-v', 'error', '-copyts', '-i', path, '-map', '0:v', '-vf',
                         ("select='%s'," % select if select else '') + TO_RGB, '-frames:v', '1', '-fps_mode', 'passthrough',
                         '-f', 'hash', '-hash', 'sha160', '-')


def test_picture_is_the_first_at_or_after_the_thumbnail_time(mkvx, mux, film):
    thumbnail = mkvx('info', '--format', 'json', film).json()['tracks'][1]['thumbnail_us']
    picture_path = mux.path('frame.png')
    assert mkvx('decode', film, '-o', picture_path).code == 0
    assert thumbnail > 0 and rgb(picture_path) == rgb(film, 'gte(t,%f)' % (thumbnail / 1e6)) != rgb(film)


@pytest.mark.parametrize('stream', ['flac', 'aac', 'pcm_s24be'])
def test_sound_file_holds_every_sample(mkvx, mux, stream):
    source, wav = mux.ffmpeg(stream + '.mkv', [stream]), mux.path(stream + '.wav')
    run = mkvx('decode', '--aac', 'ffmpeg', source, '-o', wav)
    assert (run.code, run.err) == (0, '')
    written, expected = ffmpeg.decode(wav), ffmpeg.decode(source)
    assert (written.samples, written.sha1) == (expected.samples, expected.sha1)


def test_which_track_goes_into_the_output(mkvx, mux, film):
    for name, options, head in [('any', [], b'\x89PNG'), ('sound.wav', [], b'RIFF'),
                                ('chosen', ['--track', '0'], b'RIFF'), ('picture.wav', ['--track', '1'], b'\x89PNG')]:
        assert mkvx('decode', film, '-o', mux.path(name), *options).code == 0
        with open(mux.path(name), 'rb') as f:
            assert f.read(4) == head, name


def test_frames_ends_each_track_early(mkvx, film):
    tracks = decode(mkvx, film, '--frames', '5')
    assert [(t['track'], t['type'], t['frames']) for t in tracks] == [(0, 'audio', 5), (1, 'video', 5)]
    assert all(t['units'] < 30 for t in tracks)
    assert decode(mkvx, film, '--track', '1')[0]['frames'] == 30


@pytest.mark.parametrize('arguments, code, said', [
    (['--track', '2'], 2, 'index 2 holds subtitles'),
    (['--track', '7'], 2, 'there is no index 7, the file offers 3'),
    (['--frames', '0'], 2, '--frames'),
    (['--frames', '1', '--track', '1', '-o', 'never.png'], 1, 'no picture was decoded at or after'),
    (['-o', '/nowhere/x.png'], 1, '/nowhere/x.png: cannot be written: No such file or directory'),
    (['--track', '0', '-o', '/nowhere/x.wav'], 1, '/nowhere/x.wav: cannot be written: No such file or directory'),
])
def test_what_cannot_be_done_is_said(mkvx, film, tmp_path, arguments, code, said):
    run = mkvx('decode', film, *arguments, cwd=tmp_path)
    assert run.code == code and said in run.err and run.err.count('\n') == 1
    assert not list(tmp_path.iterdir())


def test_damaged_units_are_counted(mkvx, mux):
    """Every byte of four units is altered; they are told, and the others are still decoded."""
    track, packets = mux.packets('flac')
    for p in packets[4:8]:
        p.data = bytes(b ^ 0x55 for b in p.data)
    path = mux.write('damaged.mkv', sound('A_FLAC', track.private), packets)
    result = decode(mkvx, path)[0]
    assert (result['units'], result['errors']) == (12, 4) and result['frames'] == 8 and result['problem']


def test_configurations_cut_anywhere_end_in_a_result(mkvx, mux):
    """Every codec's configuration at every length: no crash, no hang, one result per track that is offered."""
    avc = mux.packets('h264')[0].private
    hevc = mux.packets('hevc')[0].private
    wave = wave_format(2, align=1024, bits=4, extra=bytes(32))
    stream = bitmap_header('WMV2', bytes(4))
    tracks = []
    for make, codec_id, config in [(picture, 'V_MPEG4/ISO/AVC', avc), (picture, 'V_MPEGH/ISO/HEVC', hevc[:90]),
                                   (picture, 'V_MS/VFW/FOURCC', stream), (picture, 'V_REAL/RV10', bytes(40)),
                                   (sound, 'A_MS/ACM', wave), (sound, 'A_FLAC', b'fLaC' + bytes(130)),
                                   (sound, 'A_AAC', bytes.fromhex('2b8a0800'))]:
        tracks += [make(codec_id, config[:size]) for size in range(1, len(config) + 1)]
    frames = [craft.simple_block(1, 0, bytes(range(64)))]
    path = mux.path('cut.mkv')
    Path(path).write_bytes(craft.matroska(tracks, craft.cluster(0, *frames)))
    assert len(ebml.read(path).tracks) == len(tracks) > 300
    results = decode(mkvx, path)
    assert len(results) > 250 and all(t['decoder'] or t['problem'] for t in results)
