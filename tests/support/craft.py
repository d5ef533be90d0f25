"""Small Matroska files, byte by byte, for the cases that no muxer writes."""
import struct


def number(value):
    return value.to_bytes(max(1, (value.bit_length() + 7) // 8), 'big')


def element(id_, payload):
    """An element with an eight-byte size, so that sizes never change width."""
    return number(id_) + (1 << 56 | len(payload)).to_bytes(8, 'big') + payload


def uint(id_, value):
    return element(id_, number(value))


def text(id_, value):
    return element(id_, value if isinstance(value, bytes) else value.encode())


def real(id_, value):
    return element(id_, struct.pack('>d', value))


def video(no, codec, *more, width=64, height=48, shown=b''):
    picture = element(0xE0, uint(0xB0, width) + uint(0xBA, height) + shown)
    return element(0xAE, uint(0xD7, no) + uint(0x83, 1) + text(0x86, codec) + picture + b''.join(more))


def audio(no, codec, *more, rate=48000.0, channels=2):
    sound = element(0xE1, real(0xB5, rate) + uint(0x9F, channels))
    return element(0xAE, uint(0xD7, no) + uint(0x83, 2) + text(0x86, codec) + sound + b''.join(more))


def subtitle(no, codec='S_TEXT/UTF8', *more):
    return element(0xAE, uint(0xD7, no) + uint(0x83, 17) + text(0x86, codec) + b''.join(more))


def name(value):
    return text(0x536E, value)


def private(data):
    return element(0x63A2, data)


def stripped(header):
    """Of a track from whose frames this header was left out. The plug-in takes its blocks apart."""
    compression = element(0x5034, uint(0x4254, 3) + element(0x4255, header))
    return element(0x6D80, element(0x6240, uint(0x5032, 1) + compression))


def bad_laces(no, time):
    """A block whose frames cannot be told apart."""
    return simple_block(no, time, b'\1\xff\xff\xff\x10short', lacing=1)


def simple_block(no, time, payload, key=True, lacing=0):
    return element(0xA3, bytes([0x80 | no]) + struct.pack('>h', time) + bytes([key << 7 | lacing << 1]) + payload)


def block_group(no, time, payload, duration):
    block = element(0xA1, bytes([0x80 | no]) + struct.pack('>h', time) + b'\0' + payload)
    return element(0xA0, block + uint(0x9B, duration))


def cluster(time, *blocks):
    return element(0x1F43B675, uint(0xE7, time) + b''.join(blocks))


def cue(time, track, position):
    place = uint(0xF7, track) + element(0xF1, position.to_bytes(8, 'big'))
    return element(0x1C53BB6B, element(0xBB, uint(0xB3, time) + element(0xB7, place)))


def seek_head(at, elements):
    """Leads to elements that lie one behind the other from `at` on, in bytes from the start of the Segment's data."""
    entries = b''
    for found in elements:
        entries += element(0x4DBB, element(0x53AB, found[:4]) + element(0x53AC, at.to_bytes(8, 'big')))
        at += len(found)
    return element(0x114D9B74, entries)


def matroska(tracks, *clusters, duration_ms=1000.0, doctype='matroska', cue_for=None, led_to=(), info=b''):
    """`cue_for`: the track of a Cues element that names the first cluster, at time 0. `led_to`: elements behind the clusters,
    to which a SeekHead leads. `info`: more of the Info element."""
    head = element(0x1A45DFA3, text(0x4282, doctype) + uint(0x4285, 2))
    info = element(0x1549A966, uint(0x2AD7B1, 1000000) + real(0x4489, duration_ms) + info)
    front = info + element(0x1654AE6B, b''.join(tracks))
    if cue_for is not None:
        between = len(seek_head(0, led_to)) if led_to else 0
        front += cue(0, cue_for, len(front) + len(cue(0, cue_for, 0)) + between)
    media = b''.join(clusters)
    if led_to:
        front += seek_head(len(front) + len(seek_head(0, led_to)) + len(media), led_to)
    return head + element(0x18538067, front + media + b''.join(led_to))
