"""What ffmpeg knows of a file with its own demultiplexer and decoders: the independent reader of these tests."""
import functools
import json
import os
import subprocess
from dataclasses import dataclass

# Which PCM encoder writes a decoder's sample format as it is.
PCM = {'u8': 'u8', 's16': 's16le', 's32': 's32le', 'flt': 'f32le', 'dbl': 'f64le'}


def output(*command, is_clean=True):
    """`is_clean`: the program must have nothing to complain about."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    assert done.returncode == 0 and (done.stderr == b'' or not is_clean), '%s: %s' % (command, done.stderr.decode())
    return done.stdout


@functools.lru_cache
def probe_version(path, _, is_clean):
    return json.loads(output('ffprobe', '-v', 'error', '-show_packets', '-show_streams', '-show_data_hash', 'sha160', '-of', 'json',
                             path, is_clean=is_clean))


def probe(path, is_clean=False):
    """Streams and packets."""
    return probe_version(path, os.stat(path).st_mtime_ns, is_clean)


@dataclass
class Packet:
    pts: int            # in units of the file's time scale, None for a lace whose time ffprobe cannot tell
    key: bool
    size: int
    sha1: str


def packets(path, streams=1):
    """A list of packets for each of the first `streams` streams; attachments come behind the tracks."""
    result = [[] for _ in range(streams)]
    for p in probe(path)['packets']:
        if p['stream_index'] < streams:
            result[p['stream_index']].append(Packet(p.get('pts'), 'K' in p['flags'], int(p['size']),
                                                    p['data_hash'].split(':')[1]))
    return result


@dataclass
class Decoded:
    frames: int = 0
    samples: int = 0
    sha1: str = ''


def decode(path, decoder=None, is_clean=True):
    """The first stream. No key of the metadata tells a decoder which samples of a file to leave out, so ffmpeg must not
    either; WMA's decoder leaves out its own first ones unasked."""
    stream = probe(path)['streams'][0]
    encoder, width = 'rawvideo', None
    if stream['codec_type'] == 'audio':
        pcm = PCM['flt' if decoder else stream['sample_fmt'].rstrip('p')]
        encoder, width = 'pcm_' + pcm, int(''.join(c for c in pcm if c.isdigit())) // 8 * stream['channels']
    flags = [] if stream['codec_name'].startswith('wma') else ['-flags2', '+skip_manual']
    to = ['-map', '0:0', '-fps_mode', 'passthrough', '-c', encoder, '-f']
    # The first line is of the whole, then comes one for each frame.
    whole, frames = (path + '.hash', path + '.frames')
    output('ffmpeg', '-v', 'error', '-y', '-threads', '1', *flags, *(['-c:a', decoder] if decoder else []), '-i', path,
           *to, 'hash', '-hash', 'sha160', whole, *to, 'framecrc', frames, is_clean=is_clean)
    sizes = [int(line.split(',')[4]) for line in open(frames) if line[0] != '#']
    return Decoded(len(sizes), sum(sizes) // width if width else 0, open(whole).read().strip().split('=')[1])
