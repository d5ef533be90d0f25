"""Decodes one file twice: by mkvx decode, and by ffmpeg with its own demultiplexer. Both use the same decoder library,
so what differs is what the plug-in hands out."""
import json
import subprocess
from dataclasses import dataclass

import ebml

# Which PCM encoder writes a decoder's sample format as it is.
PCM = {'u8': 'u8', 's16': 's16le', 's32': 's32le', 'flt': 'f32le', 'dbl': 'f64le'}


@dataclass
class Decoded:
    frames: int = 0
    samples: int = 0
    sha1: str = ''


def output(*command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    assert done.returncode == 0, '%s: %s' % (' '.join(command), done.stderr.decode())
    return done.stdout.decode()


def mkvx_decode(mkvx, path, *options):
    return json.loads(output(mkvx, 'decode', '--format', 'json', path, *options))['tracks']


def by_ffmpeg(path, mime):
    # No key of the metadata tells a decoder which samples of a file to leave out, so ffmpeg must not either; WMA's
    # decoder leaves out its own first ones unasked.
    flags = [] if mime == 'audio/wma' else ['-flags2', '+skip_manual']
    # "audio/mpeg" is every layer, so the decoder has to be one for every layer.
    decoder = 'mp3float' if mime == 'audio/mpeg' else None
    shown = json.loads(output('ffprobe', '-v', 'error', *flags, '-show_frames', '-show_streams', '-of', 'json',
                              '-select_streams', '0', path))
    stream, frames = shown['streams'][0], shown['frames']
    encoder = 'rawvideo'
    if stream['codec_type'] == 'audio':
        encoder = 'pcm_' + PCM['flt' if decoder else stream['sample_fmt'].rstrip('p')]
    line = output('ffmpeg', '-v', 'error', '-threads', '1', *flags, *(['-c:a', decoder] if decoder else []),
                  '-i', path, '-map', '0:0', '-fps_mode', 'passthrough', '-c', encoder, '-f', 'hash', '-hash', 'sha160', '-')
    return Decoded(len(frames), sum(f.get('nb_samples', 0) for f in frames), line.strip().split('=')[1])


@dataclass
class Row:
    """One line of the table and what is claimed of it."""
    case: object
    codec_id: str
    track: dict             # as mkvx decode printed it; None when the plug-in offers no track
    units: int              # that have to be delivered
    expected: Decoded

    def same(self):
        t, e = self.track, self.expected
        return (t['frames'], t.get('samples', 0), t['sha1']) == (e.frames, e.samples, e.sha1)

    def check(self):
        assert self.codec_id == self.case.codec_id
        getattr(self, 'check_' + self.case.claim)()
        if self.track:
            assert self.track['mime'] == self.case.mime

    def check_decoded(self):
        """As ffmpeg decodes it, to the last bit, and without a complaint."""
        assert self.track and self.track['errors'] == 0, self.track
        assert self.track['units'] == self.units and self.expected.frames > 0
        assert self.same(), '%s\n%s' % (self.track, self.expected)

    def check_dropped(self):
        """Not offered at all."""
        assert self.track is None and self.expected.frames > 0

    def check_refused(self):
        """Offered, but the metadata leads a decoder nowhere."""
        assert self.track['decoder'] is None and self.track['problem'], self.track

    def check_undecodable(self):
        """Offered and fed whole, and no unit makes sense to the decoder that the metadata leads to."""
        t = self.track
        assert (t['units'], t['frames'], t['errors']) == (self.units, 0, self.units) and self.expected.frames > 0, t

    def check_altered(self):
        """Decoded unit by unit, to something else than what was encoded."""
        t = self.track
        assert t['units'] == self.units and t['frames'] == self.expected.frames and not self.same(), t


def judge(mkvx, maker, case):
    path, reference = case.make(maker)
    doc = ebml.read(path)
    tracks = mkvx_decode(mkvx, path)
    assert len(doc.tracks) == 1 and len(tracks) < 2
    units = len(doc.blocks)                 # a block of several frames is one unit, except for Vorbis
    if doc.tracks[0].codec_id == 'A_VORBIS':
        units = sum(len(block.frames) for block in doc.blocks)
    return Row(case, doc.tracks[0].codec_id, tracks[0] if tracks else None, units, by_ffmpeg(reference, case.mime))


def table(rows):
    cells = [('codec', 'CodecID', 'MIME', 'units', 'decoded', 'expected', 'errors', 'outcome')]
    for row in rows:
        t = row.track or {}
        cells.append((row.case.name, row.codec_id, t.get('mime', '-'), t.get('units', '-'), t.get('frames', '-'),
                      row.expected.frames, t.get('errors', '-'),
                      row.case.claim + (': ' + row.case.why if row.case.why else '')))
    widths = [max(len(str(line[i])) for line in cells) for i in range(8)]
    return '\n'.join('  '.join(str(c).ljust(w) for c, w in zip(line, widths)).rstrip() for line in cells)
