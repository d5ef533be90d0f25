"""Makes the files under test: short synthetic streams, stored by ffmpeg and mkvmerge, or written here byte by byte."""
import hashlib
import os
import struct
import subprocess
from dataclasses import dataclass
from pathlib import Path

import craft
import ebml

WIDTH, HEIGHT = 176, 144
VIDEO = 'testsrc2=size=%dx%d:rate=25:duration=1.2' % (WIDTH, HEIGHT)
AUDIO = 'sine=frequency=440:sample_rate=44100:duration=1.2'

X264 = '-c:v libx264 -preset veryfast -threads 1 -pix_fmt yuv420p '
X265 = '-c:v libx265 -preset ultrafast -pix_fmt yuv420p -x265-params log-level=error:keyint=10:pools=1'
FAST_VP = ' -deadline realtime -cpu-used 8 -g 10'

# Every stream that any test uses: encoder options, and the extension of a file that holds it as it is. Others are named by
# what they are: two seconds of "mp3" are ('sine=...', '-c:a libmp3lame', 'mp3').
STREAMS = {
    'h264': (X264 + '-bf 2 -g 10', 'mkv'), 'h264_start_codes': (X264 + '-bf 0 -g 10', 'h264'),
    'h264_headers_repeated': (X264 + '-bf 2 -g 10 -x264-params repeat-headers=1', 'mkv'),
    'hevc': (X265, 'mkv'), 'hevc_headers_repeated': (X265 + ':repeat-headers=1', 'mkv'),
    'mpeg4': ('-c:v mpeg4 -bf 2 -g 10', 'mkv'), 'mpeg4_headers_aside': ('-c:v mpeg4 -flags +global_header -g 10', 'mkv'),
    'mpeg2': ('-c:v mpeg2video -bf 2 -g 10', 'mkv'), 'mpeg2_bare': ('-c:v mpeg2video -bf 2 -g 10', 'm2v'),
    'mpeg1': ('-c:v mpeg1video -bf 2 -g 10', 'mkv'), 'mpeg1_bare': ('-c:v mpeg1video -bf 2 -g 10', 'm1v'),
    'vp9': ('-c:v libvpx-vp9' + FAST_VP, 'webm'), 'vp8': ('-c:v libvpx' + FAST_VP, 'webm'),
    'av1': ('-c:v libaom-av1 -cpu-used 8 -usage realtime -frames:v 3', 'mkv'), 'mjpeg': ('-c:v mjpeg -pix_fmt yuvj420p', 'mkv'),
    'theora': ('-c:v libtheora', 'mkv'), 'rv10': ('-c:v rv10 -g 10', 'rm'), 'rv20': ('-c:v rv20 -g 10', 'rm'),
    'aac': ('-c:a aac -b:a 48k', 'm4a'), 'aac_stereo': ('-c:a aac -b:a 48k -ac 2', 'm4a'),
    'mp3': ('-c:a libmp3lame -b:a 32k', 'mp3'), 'mp2': ('-c:a mp2 -b:a 48k', 'mp2'),
    'ac3': ('-c:a ac3 -b:a 64k', 'ac3'), 'ac3_48k': ('-c:a ac3 -b:a 64k -ar 48000', 'ac3'), 'eac3': ('-c:a eac3 -b:a 64k', 'eac3'),
    'dts': ('-c:a dca -ac 2 -b:a 320k', 'dts'), 'flac': ('-c:a flac', 'flac'),
    'vorbis': ('-c:a libvorbis -fflags +bitexact -flags:a +bitexact -map_metadata -1', 'ogg'),
    'opus': ('-c:a libopus -b:a 32k', 'opus'), 'ra144': ('-c:a real_144 -ar 8000', 'mka'),
    **{name: ('-c:v %s -g 10' % name, 'mkv') for name in ('wmv1', 'wmv2', 'h263', 'msmpeg4', 'msmpeg4v2')},
    'flv1': ('-c:v flv -g 10', 'mkv'),
    **{tag: ('-c:v %s -g 10 -vtag %s' % (encoder, tag), 'avi') for tag, encoder in (
        ('XVID', 'mpeg4'), ('DIVX', 'mpeg4'), ('FMP4', 'mpeg4'), ('DX50', 'mpeg4'), ('MP43', 'msmpeg4'), ('DIV3', 'msmpeg4'),
        ('DIV4', 'msmpeg4'), ('DIV2', 'msmpeg4v2'))},
    **{name: ('-c:a ' + name, 'mka') for name in (
        'pcm_s16le', 'pcm_s24le', 'pcm_s16be', 'pcm_s24be', 'pcm_s32be', 'pcm_f32le', 'pcm_alaw', 'pcm_mulaw', 'adpcm_ms',
        'adpcm_ima_wav', 'adpcm_yamaha', 'adpcm_swf', 'wmav1', 'wmav2', 'alac', 'wavpack', 'tta')},
    **{name + '_stereo': ('-c:a %s -ac 2' % name, 'mka') for name in ('pcm_u8', 'pcm_s16le', 'pcm_s24le', 'pcm_s32le', 'adpcm_ms')},
}

ASS_HEAD = '''[Script Info]
ScriptType: v4.00+

[V4+ Styles]
Format: Name, Fontname, Fontsize, PrimaryColour, SecondaryColour, OutlineColour, BackColour, Bold, Italic, Underline, \
StrikeOut, ScaleX, ScaleY, Spacing, Angle, BorderStyle, Outline, Shadow, Alignment, MarginL, MarginR, MarginV, Encoding
Style: Default,Arial,16,&H00FFFFFF,&H000000FF,&H00000000,&H00000000,0,0,0,0,100,100,0,0,1,1,0,2,10,10,10,1

[Events]
Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text
'''


def clock(ms, point, digits):
    text = '%02d:%02d:%02d' % (ms // 3600000, ms // 60000 % 60, ms // 1000 % 60)
    return text + point + ('%03d' % (ms % 1000))[:digits]


def run(*command, **options):
    done = subprocess.run([str(word) for word in command], stdout=options.pop('stdout', subprocess.PIPE), stderr=subprocess.PIPE,
                          **options)
    # mkvmerge ends with 1 after a warning.
    assert done.returncode == 0 or command[0] == 'mkvmerge' and done.returncode == 1, \
        '%s: %s%s' % (command, (done.stdout or b'').decode(), done.stderr.decode())
    return done


@dataclass
class Packet:
    ms: int
    key: bool
    data: bytes


class Muxer:
    """Runs the muxers in one folder. Each stream is encoded once in the build folder's life."""

    def __init__(self, folder):
        self.folder = folder
        self.streams = Path(os.environ.get('MKVX_BUILD', folder)) / 'streams'
        self.streams.mkdir(exist_ok=True)

    def path(self, name):
        return str(self.folder / name)

    def stream(self, name):
        """Path of a file that holds one encoded stream: of STREAMS, or as (source, encoder options, extension)."""
        source, options, extension = name if isinstance(name, tuple) else (None, *STREAMS[name])
        source = source or (VIDEO if '-c:v' in options else AUDIO)
        made = self.streams / ('%s.%s' % (hashlib.sha1((source + options).encode()).hexdigest()[:16], extension))
        if not made.exists():       # tests that run beside this one may want it too
            begun = made.with_name('%d-%s' % (os.getpid(), made.name))
            run('ffmpeg', '-v', 'error', '-y', '-f', 'lavfi', '-i', source, *options.split(), '-strict', '-2', begun)
            begun.rename(made)
        return str(made)

    def text(self, name, content):
        Path(self.path(name)).write_text(content)
        return self.path(name)

    def srt(self, name, lines):
        """lines: (start ms, end ms, text)"""
        return self.text(name, ''.join('%d\n%s --> %s\n%s\n\n' % (i, clock(start, ',', 3), clock(end, ',', 3), text)
                                       for i, (start, end, text) in enumerate(lines, 1)))

    def ass(self, name, lines):
        return self.text(name, ASS_HEAD + ''.join(
            'Dialogue: 0,%s,%s,Default,,0,0,0,,%s\n' % (clock(start, '.', 2)[1:], clock(end, '.', 2)[1:], text)
            for start, end, text in lines))

    def inputs(self, streams):
        """Streams become files; anything with a slash is a path already."""
        return [s if '/' in s else self.stream(s) for s in streams]

    def ffmpeg(self, out, streams, *options, piped=False):
        """`piped`: nothing can be filled in afterwards."""
        inputs = self.inputs(streams)
        command = ['ffmpeg', '-v', 'error', '-y', *(word for path in inputs for word in ('-i', path)),
                   *(word for i in range(len(inputs)) for word in ('-map', str(i))), '-c', 'copy', '-strict', '-2', *options]
        if not piped:
            run(*command, self.path(out))
        else:
            with open(self.path(out), 'wb') as f:
                run('bash', '-c', '"$@" | cat', 'bash', *command, '-f', 'matroska', 'pipe:1', stdout=f)
        return self.path(out)

    def mkvmerge(self, out, streams, *options, per_input=()):
        command = ['mkvmerge', '--quiet', '--deterministic', '1', '--output', self.path(out), *options]
        for path in self.inputs(streams):
            command += [*per_input, path]
        run(*command)
        return self.path(out)

    def packets(self, name):
        """The only track of a stream as ffmpeg stores it, and its packets."""
        path = self.ffmpeg('packets-%s.mkv' % name, [name])
        doc = ebml.read(path)
        assert len(doc.tracks) == 1 and doc.scale == 1000000
        return doc.tracks[0], [Packet(b.ticks, b.key, f) for b in doc.blocks for f in b.frames]

    def write(self, name, track, packets):
        """`track`: a TrackEntry with number 1."""
        clusters = []
        for i in range(0, len(packets), 10):
            base = packets[i].ms
            clusters.append(craft.cluster(base, *(craft.simple_block(1, p.ms - base, p.data, p.key)
                                                  for p in packets[i:i + 10])))
        Path(self.path(name)).write_bytes(craft.matroska([track], *clusters, duration_ms=packets[-1].ms + 40.0))
        return self.path(name)


# TrackEntries of our own, with number 1.

def bitmap_header(fourcc, extra=b''):
    return struct.pack('<IiiHH4sIiiII', 40 + len(extra), WIDTH, HEIGHT, 1, 24, fourcc.encode(), WIDTH * HEIGHT * 3, 0, 0, 0,
                       0) + extra


def wave_format(tag, channels=1, align=1, bits=16, extra=b''):
    return struct.pack('<HHIIHHH', tag, channels, 44100, 0, align, bits, len(extra)) + extra


def picture(codec_id, private=b''):
    return craft.video(1, codec_id, *([craft.private(private)] if private else []), width=WIDTH, height=HEIGHT)


def sound(codec_id, private=b'', rate=44100.0, channels=1, bits=None):
    audio = craft.real(0xB5, rate) + craft.uint(0x9F, channels) + (craft.uint(0x6264, bits) if bits else b'')
    return craft.element(0xAE, craft.uint(0xD7, 1) + craft.uint(0x83, 2) + craft.text(0x86, codec_id) +
                         craft.element(0xE1, audio) + (craft.private(private) if private else b''))
