"""What mkvx check says of streams: profile, level, samples and rates, as ffprobe finds them by decoding; and units that no
decoder takes."""
import json
from pathlib import Path

import craft
import ffmpeg
import pytest
from muxing import AUDIO, VIDEO, X265

X264 = '-c:v libx264 -preset veryfast -threads 1 '
VP9 = '-c:v libvpx-vp9 -deadline realtime -cpu-used 8 '
ODD = 'testsrc2=size=180x148:rate=30000/1001:duration=1'

STREAMS = [
    *[(VIDEO, X264 + '-pix_fmt ' + form) for form in ('yuv420p -profile:v baseline', 'yuv420p10le', 'yuv422p', 'yuv422p10le', 'yuv444p')],
    (VIDEO, X264 + '-pix_fmt yuv420p -profile:v main -level 3.1'), (ODD, X264 + '-pix_fmt yuv420p -flags +ildct+ilme'),
    *[(VIDEO, X265.replace('yuv420p', form)) for form in ('yuv420p', 'yuv420p10le', 'yuv422p', 'yuv444p', 'yuv420p12le')],
    *[(VIDEO, VP9 + '-pix_fmt ' + form) for form in ('yuv420p', 'yuv422p', 'yuv440p', 'yuv444p', 'yuv420p10le', 'yuv422p12le', 'gbrp')],
    (VIDEO, '-c:v mpeg2video'), (VIDEO, '-c:v mpeg2video -pix_fmt yuv422p -profile:v 0 -level:v 5'), (VIDEO, '-c:v mpeg1video'),
    (VIDEO, '-c:v mpeg4'), (VIDEO, '-c:v mpeg4 -bf 2 -flags +qpel'), (VIDEO, '-c:v mpeg4 -vtag XVID'),
    *[(AUDIO, '-c:a ' + codec) for codec in ('aac', 'aac -profile:a aac_main', 'aac -ac 6', 'flac', 'flac -sample_fmt s32', 'libmp3lame')],
]
LEVEL_UNITS = {'h264': 10, 'hevc': 30, 'mpeg4': 1}


def as_told(probed):
    """ffprobe's stream in the words of mkvx; what it cannot know of the codec is absent."""
    told = {'profile': probed.get('profile', '').replace('Profile ', '').replace(' Profile', '')}
    if probed['codec_name'] in LEVEL_UNITS:
        told['level'] = '%g' % (probed['level'] / LEVEL_UNITS[probed['codec_name']])
    if probed['codec_type'] == 'video':
        form = probed['pix_fmt'].replace('gbrp', 'yuv444p')
        told.update(chroma=':'.join(form[3:6]), bit_depth=int(form.partition('p')[2][:2] or 8))
        over, under = map(int, probed['r_frame_rate'].split('/'))
        told.update(width=probed['width'], height=probed['height'], frame_rate=round(over / under))
    else:
        told.update(sample_rate=int(probed['sample_rate']), channels=probed['channels'])
        told['bit_depth'] = int(probed.get('bits_per_raw_sample', 0))
    return {name: value for name, value in told.items() if value}


def checked(mkvx, path):
    return mkvx('check', '--format', 'jsonl', path).json()['tracks'][0]


def grave(mkvx, path):
    return {f['code']: f['weight'] for f in checked(mkvx, path)['findings'] if f['weight'] != 'note'}


@pytest.mark.parametrize('source, options', STREAMS, ids=lambda text: text[-30:])
def test_as_ffprobe_finds_it(mkvx, mux, source, options):
    path = mux.stream((source, options, 'mkv'))
    told, expected = checked(mkvx, path)['stream'], as_told(ffmpeg.probe(path)['streams'][0])
    if 'frame_rate' in told:
        told['frame_rate'] = round(told['frame_rate'])
    if 'libmp3lame' in options:
        assert told.pop('profile') == 'layer 3'
    if '-c:v mpeg' in options:      # a level by name; and the size is the track's
        told = {name: value for name, value in told.items() if name in expected}
        expected = {name: value for name, value in expected.items() if name in told}
    assert told == expected and len(told) > 1


@pytest.mark.parametrize('stream', ['vp9', 'flac', 'ac3', 'aac', 'vorbis'])
def test_what_no_decoder_takes(mkvx, mux, stream):
    """Units, and for Vorbis a configuration, whose bytes are others: told by check, and failed at by the decoders."""
    path = mux.ffmpeg('spoilt-%s.mkv' % stream, [stream])
    assert not grave(mkvx, path)
    whole = json.loads(ffmpeg.output('ffprobe', '-v', 'error', '-show_packets', '-of', 'json', path))['packets']
    data = bytearray(Path(path).read_bytes())
    places = [int(p['pos']) + 4 for p in whole] if stream != 'vorbis' else [data.index(b'\x05vorbis') + 40]
    for at in places:
        data[at:at + 60] = bytes(b ^ 0x55 for b in data[at:at + 60])
    Path(path).write_bytes(data)
    decoded = mkvx('decode', '--format', 'json', path).json()['tracks'][0]
    assert decoded['frames'] == 0 and decoded['problem']
    assert grave(mkvx, path) == {'config_undecodable' if stream == 'vorbis' else 'units_undecodable': 'mute'}


@pytest.mark.parametrize('stream, said', [
    ('h264', None), (X264 + '-pix_fmt yuv422p', 'High 4:2:2 is not among'), (X264 + '-pix_fmt yuv420p10le', 'High 10 is not among'),
    (X264 + '-pix_fmt gray', '4:0:0 is not 4:2:0'), ('hevc', None), (X265.replace('yuv420p', 'yuv420p10le'), 'Main 10 is not among'),
    ('vp9', None), (VP9 + '-pix_fmt yuv444p', 'profile 1 is not among'), ('-c:v mpeg4', None), ('-c:v mpeg4 -bf 2 -flags +qpel', 'Advanced Simple'),
    ('aac', None), ('-c:a aac -profile:a aac_ltp', 'refuses its configuration (LTP)'), ('mp3', None), ('mp2', 'layer 2 is not among'),
    ('ac3', 'no software decoder'), ('wmv2', 'video/mixer is a MIME type that only some vendors have'), ('flac', None),
])
def test_what_decoders_of_the_era_take(mkvx, mux, stream, said):
    path = mux.ffmpeg('era.mkv', [stream if '-' not in stream else (AUDIO if '-c:a' in stream else VIDEO, stream, 'mkv')])
    told = [f['sentence'] for f in checked(mkvx, path)['findings'] if f['code'] in
            ('decoder_profile', 'decoder_refuses', 'no_decoder', 'vendor_mime')]
    assert len(told) == (said is not None) and all(said in sentence for sentence in told)


def test_what_a_device_does_not_take_is_mended_for_it(mkvx, mux):
    """Of this list's decoders; and without one what may play as it is has no remedy."""
    streams = [(VIDEO, X264 + '-pix_fmt yuv422p10le', 'mkv'), (AUDIO, '-c:a aac -profile:a aac_ltp', 'mkv'), 'dts']
    path, out = mux.ffmpeg('foreign.mkv', streams), mux.path('native.mkv')
    device = ['--device', Path(__file__).parents[2] / 'samples/device/media_codecs.xml', '--format', 'json']
    assert not any('remedy' in f for t in mkvx('check', '--format', 'jsonl', path).json()['tracks'] for f in t['findings'])
    report = mkvx('mend', path, '-o', out, *device).json()
    assert {f['code'] for f in report['gone']} == {'decoder_profile', 'decoder_refuses', 'no_decoder'}
    assert [(t['stream']['profile'], 'decoder' in t) for t in mkvx('check', out, *device).json()['files'][0]['tracks']] == \
        [('High', True), ('LC', True), ('LC', True)]


@pytest.mark.parametrize('profile', [5, 8])
def test_dolby_vision(mkvx, mux, profile):
    track, packets = mux.packets('hevc')
    record = bytes([1, 0, profile << 1, 1 << 3 | 5, 1 << 4 if profile == 8 else 0]) + bytes(19)
    mapping = craft.element(0x41E4, craft.uint(0x41E7, int.from_bytes(b'dvcC', 'big')) + craft.element(0x41ED, record))
    path = mux.write('dolby-%d.mkv' % profile, craft.video(1, 'V_MPEGH/ISO/HEVC', craft.private(track.private), mapping,
                                                           width=176, height=144), packets)
    assert ffmpeg.probe(path)['streams'][0]['side_data_list'][0]['dv_profile'] == profile
    assert ('dolby_vision' in [f['code'] for f in checked(mkvx, path)['findings']]) == (profile == 5)
