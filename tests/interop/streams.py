"""The files under test: one short synthetic track each, stored as muxers store it or written here byte by byte."""
import struct
from dataclasses import dataclass

import craft
import ebml
import heaac
import muxing

VIDEO = 'testsrc2=size=176x144:rate=25:duration=1.2'
AUDIO = 'sine=frequency=440:sample_rate=44100:duration=1.2'


@dataclass
class Case:
    name: str
    codec_id: str
    mime: str
    make: object            # make(Maker) -> (path, path that ffmpeg shall decode)
    claim: str = 'decoded'  # a check_... of judging.Row
    why: str = ''           # for every other claim


def bitmap_header(fourcc, extra=b''):
    return struct.pack('<IiiHH4sIiiII', 40 + len(extra), 176, 144, 1, 24, fourcc.encode(), 176 * 144 * 3, 0, 0, 0,
                       0) + extra


def wave_format(tag, channels=1, rate=44100, byte_rate=0, align=1, bits=16, extra=b''):
    return struct.pack('<HHIIHHH', tag, channels, rate, byte_rate, align, bits, len(extra)) + extra


@dataclass
class Packet:
    ms: int
    key: bool
    data: bytes


class Maker(muxing.Muxer):
    """Each encoding is made once; a stream is named by its encoder options."""

    def encode(self, options, extension='mkv', source=None):
        name = ''.join(c if c.isalnum() else '_' for c in options + (source or '')) + '.' + extension
        if name not in self.made:
            self.made[name] = self.path(name)
            source = source or (VIDEO if '-c:v' in options else AUDIO)
            self.run('ffmpeg', '-v', 'error', '-y', '-f', 'lavfi', '-i', source, *options.split(), '-threads', '1',
                     '-strict', '-2', self.made[name])
        return self.made[name]

    def packets(self, path):
        """The only track of a file, and its packets."""
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
        with open(self.path(name), 'wb') as f:
            f.write(craft.matroska([track], *clusters, duration_ms=packets[-1].ms + 40.0))
        return self.path(name)


def picture(codec_id, private=b''):
    return craft.video(1, codec_id, *([craft.private(private)] if private else []), width=176, height=144)


def sound(codec_id, private=b'', rate=44100.0, channels=1, bits=None):
    audio = craft.real(0xB5, rate) + craft.uint(0x9F, channels) + (craft.uint(0x6264, bits) if bits else b'')
    return craft.element(0xAE, craft.uint(0xD7, 1) + craft.uint(0x83, 2) + craft.text(0x86, codec_id) +
                         craft.element(0xE1, audio) + (craft.private(private) if private else b''))


# Ways to make a file; each gives a function for Case.make.

def muxed(options, extension='mkv', source=None):
    """By ffmpeg."""
    def make(m):
        path = m.encode(options, extension, source)
        return path, path
    return make


def merged(options, extension, *merge_options):
    """By mkvmerge, from a file of another kind."""
    def make(m):
        stream = m.encode(options, extension)
        path = m.mkvmerge('merged-' + stream.split('/')[-1] + '.mkv', [stream], *merge_options)
        return path, path
    return make


def rewritten(options, describe, change=None, reference=False):
    """A track entry of our own around ffmpeg's packets. describe(private bytes) -> TrackEntry; change(private, packet)
    -> bytes. `reference`: ffmpeg judges the file that it muxed itself, since it reads ours in its own way."""
    def make(m):
        source = m.encode(options)
        track, packets = m.packets(source)
        if change:
            packets = [Packet(p.ms, p.key, change(track.private, p)) for p in packets]
        rewritten.count += 1
        path = m.write('rewritten-%d.mkv' % rewritten.count, describe(track.private), packets)
        return path, source if reference else path
    return make


rewritten.count = 0


def high_efficiency_aac(describe):
    """describe(AudioSpecificConfig) -> TrackEntry; ffmpeg judges the file whose configuration is whole."""
    def make(m):
        config, units = heaac.encode(seconds=1.2)
        packets = [Packet(i * heaac.FRAME * 1000 // heaac.RATE, True, unit) for i, unit in enumerate(units)]
        return m.write('he-aac.mkv', describe(config), packets), \
            m.write('he-aac-whole.mkv', sound('A_AAC', config, channels=2), packets)
    return make
