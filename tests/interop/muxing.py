"""Makes the files under test: short synthetic streams, muxed by ffmpeg and mkvmerge in a temporary folder."""
import subprocess

VIDEO_SOURCE = 'testsrc2=size=96x64:rate=25:duration=1.2'
AUDIO_SOURCE = 'sine=frequency=440:sample_rate=44100:duration=1.2'

# name -> (source, encoder options, extension of a file that holds the stream as it is)
STREAMS = {
    'h264': (VIDEO_SOURCE, '-c:v libx264 -preset veryfast -bf 2 -g 10 -threads 1 -pix_fmt yuv420p', 'mkv'),
    'h264_start_codes': (VIDEO_SOURCE, '-c:v libx264 -preset veryfast -bf 0 -g 10 -threads 1 -pix_fmt yuv420p', 'h264'),
    'hevc': (VIDEO_SOURCE, '-c:v libx265 -preset ultrafast -x265-params log-level=error:keyint=10:pools=1 '
                           '-pix_fmt yuv420p', 'mkv'),
    'mpeg4': (VIDEO_SOURCE, '-c:v mpeg4 -bf 2 -g 10', 'mkv'),
    'xvid': (VIDEO_SOURCE, '-c:v mpeg4 -vtag XVID -g 10', 'avi'),
    'mpeg2': (VIDEO_SOURCE, '-c:v mpeg2video -bf 2 -g 10', 'mkv'),
    'mpeg1': (VIDEO_SOURCE, '-c:v mpeg1video -g 10', 'mkv'),
    'vp9': (VIDEO_SOURCE, '-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -g 10', 'webm'),
    'wmv2': (VIDEO_SOURCE, '-c:v wmv2 -g 10', 'mkv'),
    'flv1': (VIDEO_SOURCE, '-c:v flv -g 10', 'mkv'),
    'msmpeg4v2': (VIDEO_SOURCE, '-c:v msmpeg4v2 -g 10', 'mkv'),
    'vp8': (VIDEO_SOURCE, '-c:v libvpx -deadline realtime -cpu-used 8 -g 10', 'webm'),
    'av1': ('testsrc2=size=64x64:rate=10:duration=0.5', '-c:v libaom-av1 -cpu-used 8 -usage realtime', 'mkv'),
    'mjpeg': (VIDEO_SOURCE, '-c:v mjpeg -pix_fmt yuvj420p', 'mkv'),
    'theora': (VIDEO_SOURCE, '-c:v libtheora', 'mkv'),
    'aac': (AUDIO_SOURCE, '-c:a aac -b:a 48k', 'm4a'),
    'mp3': (AUDIO_SOURCE, '-c:a libmp3lame -b:a 32k', 'mp3'),
    'mp2': (AUDIO_SOURCE, '-c:a mp2 -b:a 48k', 'mp2'),
    'ac3_48k': (AUDIO_SOURCE, '-c:a ac3 -b:a 64k -ar 48000', 'ac3'),
    'ac3': (AUDIO_SOURCE, '-c:a ac3 -b:a 64k', 'ac3'),
    'dts': (AUDIO_SOURCE, '-c:a dca -strict -2 -ac 2 -b:a 320k', 'dts'),
    'flac': (AUDIO_SOURCE, '-c:a flac', 'flac'),
    'vorbis': (AUDIO_SOURCE, '-c:a libvorbis -fflags +bitexact -flags:a +bitexact -map_metadata -1', 'ogg'),
    'pcm_s16le': (AUDIO_SOURCE, '-c:a pcm_s16le', 'mka'),
    'pcm_s24le': (AUDIO_SOURCE, '-c:a pcm_s24le', 'mka'),
    'pcm_s16be': (AUDIO_SOURCE, '-c:a pcm_s16be', 'mka'),
    'pcm_alaw': (AUDIO_SOURCE, '-c:a pcm_alaw', 'mka'),
    'pcm_mulaw': (AUDIO_SOURCE, '-c:a pcm_mulaw', 'mka'),
    'adpcm_ms': (AUDIO_SOURCE, '-c:a adpcm_ms', 'mka'),
    'adpcm_ima': (AUDIO_SOURCE, '-c:a adpcm_ima_wav', 'mka'),
    'wmav2': (AUDIO_SOURCE, '-c:a wmav2', 'mka'),
    'opus': (AUDIO_SOURCE, '-c:a libopus -b:a 32k', 'opus'),
    'eac3': (AUDIO_SOURCE, '-c:a eac3 -b:a 64k', 'eac3'),
    'pcm_f32le': (AUDIO_SOURCE, '-c:a pcm_f32le', 'mka'),
    'alac': (AUDIO_SOURCE, '-c:a alac', 'mka'),
    'wavpack': (AUDIO_SOURCE, '-c:a wavpack', 'mka'),
    'tta': (AUDIO_SOURCE, '-c:a tta', 'mka'),
}


def srt_time(ms):
    return '%02d:%02d:%02d,%03d' % (ms // 3600000, ms // 60000 % 60, ms // 1000 % 60, ms % 1000)


def ass_time(ms):
    return '%d:%02d:%02d.%02d' % (ms // 3600000, ms // 60000 % 60, ms // 1000 % 60, ms % 1000 // 10)


ASS_HEAD = '''[Script Info]
ScriptType: v4.00+

[V4+ Styles]
Format: Name, Fontname, Fontsize, PrimaryColour, SecondaryColour, OutlineColour, BackColour, Bold, Italic, Underline, \
StrikeOut, ScaleX, ScaleY, Spacing, Angle, BorderStyle, Outline, Shadow, Alignment, MarginL, MarginR, MarginV, Encoding
Style: Default,Arial,16,&H00FFFFFF,&H000000FF,&H00000000,&H00000000,0,0,0,0,100,100,0,0,1,1,0,2,10,10,10,1

[Events]
Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text
'''


class Muxer:
    """Runs the muxers in one folder; each stream is encoded once."""

    def __init__(self, folder):
        self.folder = folder
        self.made = {}

    def path(self, name):
        return str(self.folder / name)

    def run(self, *command, **options):
        done = subprocess.run(command, stdout=options.pop('stdout', subprocess.PIPE), stderr=subprocess.PIPE, **options)
        # mkvmerge ends with 1 after a warning.
        assert done.returncode == 0 or command[0] == 'mkvmerge' and done.returncode == 1, \
            '%s: %s%s' % (' '.join(command), (done.stdout or b'').decode(), done.stderr.decode())

    def stream(self, name):
        """Path of a file that holds one encoded stream."""
        if name not in self.made:
            source, options, extension = STREAMS[name]
            self.made[name] = self.path('stream-%s.%s' % (name, extension))
            self.run('ffmpeg', '-v', 'error', '-y', '-f', 'lavfi', '-i', source, *options.split(), self.made[name])
        return self.made[name]

    def srt(self, name, lines):
        """lines: (start ms, end ms, text)"""
        with open(self.path(name), 'w') as f:
            for i, (start, end, text) in enumerate(lines, 1):
                f.write('%d\n%s --> %s\n%s\n\n' % (i, srt_time(start), srt_time(end), text))
        return self.path(name)

    def ass(self, name, lines):
        with open(self.path(name), 'w') as f:
            f.write(ASS_HEAD)
            for start, end, text in lines:
                f.write('Dialogue: 0,%s,%s,Default,,0,0,0,,%s\n' % (ass_time(start), ass_time(end), text))
        return self.path(name)

    def inputs(self, streams):
        """Stream names become files; anything with a slash is a path already."""
        return [s if '/' in s else self.stream(s) for s in streams]

    def ffmpeg(self, out, streams, *options, before=()):
        inputs, maps = [], []
        for i, path in enumerate(self.inputs(streams)):
            inputs += ['-i', path]
            maps += ['-map', str(i)]
        self.run('ffmpeg', '-v', 'error', '-y', *before, *inputs, *maps, '-c', 'copy', '-strict', '-2', *options,
                 self.path(out))
        return self.path(out)

    def ffmpeg_pipe(self, out, streams, *options):
        """Through a pipe: nothing can be filled in afterwards."""
        inputs, maps = [], []
        for i, path in enumerate(self.inputs(streams)):
            inputs += ['-i', path]
            maps += ['-map', str(i)]
        with open(self.path(out), 'wb') as f:
            self.run('bash', '-c', 'ffmpeg "$@" | cat', 'ffmpeg', '-v', 'error', *inputs, *maps, '-c', 'copy',
                     *options, '-f', 'matroska', 'pipe:1', stdout=f)
        return self.path(out)

    def mkvmerge(self, out, streams, *options, per_input=()):
        command = ['mkvmerge', '--quiet', '--deterministic', '1', '--output', self.path(out), *options]
        for path in self.inputs(streams):
            command += [*per_input, path]
        self.run(*command)
        return self.path(out)
