"""A small Matroska reader, the oracle for everything that depends on where one block ends.

It shares nothing with the C++ reader: the whole file is in memory, elements are walked with slices, and the
structures are those of RFC 8794 (EBML) and RFC 9559 (Matroska). Its frames are checked against ffprobe's packets
before they are used to judge anything.
"""
import struct
import zlib
from dataclasses import dataclass, field
from pathlib import Path

EBML, SEGMENT = 0x1A45DFA3, 0x18538067
SEEK_HEAD, INFO, TRACKS, CLUSTER = 0x114D9B74, 0x1549A966, 0x1654AE6B, 0x1F43B675
CUES, CHAPTERS, ATTACHMENTS, TAGS = 0x1C53BB6B, 0x1043A770, 0x1941A469, 0x1254C367
LEVEL_1 = {SEEK_HEAD, INFO, TRACKS, CLUSTER, CUES, CHAPTERS, ATTACHMENTS, TAGS}

VIDEO, AUDIO, SUBTITLE = 1, 2, 17


@dataclass
class Element:
    id: int
    start: int              # of the payload
    end: int                # of the payload
    unknown_size: bool


@dataclass
class Encoding:
    order: int
    kind: int               # 0 compression, 1 encryption
    algorithm: int          # 0 zlib, 3 header stripping
    settings: bytes


@dataclass
class Track:
    number: int = 0
    type: int = 0
    codec_id: str = ''
    private: bytes = b''
    name: str = ''
    language: str = ''      # empty when the element is absent
    width: int = 0
    height: int = 0
    sample_rate: float = 8000.0
    channels: int = 1
    codec_delay_ns: int = 0
    encodings: list = field(default_factory=list)


@dataclass
class Block:
    track: int              # TrackNumber
    ticks: int              # Cluster time plus relative time, in units of the file's scale
    key: bool
    lacing: int             # 0 none, 1 Xiph, 2 fixed, 3 EBML
    frames: list            # bytes, content encodings undone
    all_ones: bool          # every value bit of the stored TrackNumber is set
    duration: int = None    # ticks; None when the block has none
    grouped: bool = False   # in a BlockGroup


@dataclass
class Document:
    size: int = 0
    doc_type: str = ''
    scale: int = 1000000    # nanoseconds per tick
    duration: float = 0.0   # ticks
    last_cluster_ticks: int = 0
    level_1: list = field(default_factory=list)      # Element, in file order
    tracks: list = field(default_factory=list)       # of the first Tracks element
    blocks: list = field(default_factory=list)       # in file order
    segment_unknown_size: bool = False

    def count(self, element_id):
        return sum(e.id == element_id for e in self.level_1)

    def first(self, element_id):
        """Position in the order of level-1 elements, or None."""
        return next((i for i, e in enumerate(self.level_1) if e.id == element_id), None)

    def track(self, number):
        return next((t for t in self.tracks if t.number == number), None)


def vint(data, at, keep_marker=False):
    """The variable-length integer at `at`: (value, position behind it, all value bits set)."""
    length = 9 - data[at].bit_length()
    if length > 8:
        raise ValueError('no variable-length integer at %d' % at)
    value = int.from_bytes(data[at:at + length], 'big')
    if not keep_marker:
        value &= (1 << 7 * length) - 1
    return value, at + length, value == (1 << 7 * length) - 1


def children(data, start, end):
    at = start
    while at < end:
        element_id, at, _ = vint(data, at, keep_marker=True)
        size, at, unknown = vint(data, at)
        stop = end if unknown else min(at + size, end)
        if unknown and element_id == CLUSTER:
            stop = _end_of_unknown_cluster(data, at, end)
        yield Element(element_id, at, stop, unknown)
        at = stop


def _end_of_unknown_cluster(data, start, end):
    at = start
    while at < end:
        element_id, behind_id, _ = vint(data, at, keep_marker=True)
        if element_id in LEVEL_1:
            break
        size, at, _ = vint(data, behind_id)
        at += size
    return min(at, end)


def _uint(b):
    return int.from_bytes(b, 'big')


def _float(b):
    return struct.unpack({4: '>f', 8: '>d'}[len(b)], b)[0] if b else 0.0


def _text(b):
    return b.split(b'\0')[0].decode()


TRACK_FIELDS = {0xD7: ('number', _uint), 0x83: ('type', _uint), 0x86: ('codec_id', _text), 0x63A2: ('private', bytes),
                0x536E: ('name', _text), 0x22B59C: ('language', _text), 0x56AA: ('codec_delay_ns', _uint),
                0xB0: ('width', _uint), 0xBA: ('height', _uint), 0xB5: ('sample_rate', _float),
                0x9F: ('channels', _uint)}
TRACK_MASTERS = {0xE0, 0xE1}                 # Video, Audio: their fields are the track's here
ENCODING_FIELDS = {0x5031: 'order', 0x5033: 'kind', 0x4254: 'algorithm', 0x4255: 'settings'}
ENCODING_MASTERS = {0x5034, 0x5035}


def _read_encoding(data, element, into):
    for e in children(data, element.start, element.end):
        if e.id in ENCODING_MASTERS:
            _read_encoding(data, e, into)
        elif e.id in ENCODING_FIELDS:
            raw = data[e.start:e.end]
            setattr(into, ENCODING_FIELDS[e.id], raw if e.id == 0x4255 else _uint(raw))
    return into


def _read_track(data, element, into):
    for e in children(data, element.start, element.end):
        if e.id in TRACK_MASTERS:
            _read_track(data, e, into)
        elif e.id in TRACK_FIELDS:
            name, convert = TRACK_FIELDS[e.id]
            setattr(into, name, convert(data[e.start:e.end]))
        elif e.id == 0x6D80:
            into.encodings = sorted((_read_encoding(data, c, Encoding(0, 0, 0, b''))
                                     for c in children(data, e.start, e.end) if c.id == 0x6240),
                                    key=lambda encoding: encoding.order)
    return into


def lace_sizes(data, at, end, lacing):
    """Sizes of the frames of a block whose lacing header is at `at`, and where the first frame begins."""
    if lacing == 0:
        return [end - at], at
    count = data[at] + 1
    at += 1
    sizes = []
    if lacing == 2:
        return [(end - at) // count] * count, at
    for i in range(count - 1):
        if lacing == 1:
            size = 0
            while data[at] == 255:
                size += 255
                at += 1
            size += data[at]
            at += 1
        else:
            size, behind, _ = vint(data, at)
            if i:
                size += sizes[-1] - ((1 << (7 * (behind - at) - 1)) - 1)
            at = behind
        sizes.append(size)
    return sizes + [end - at - sum(sizes)], at


def undo(frame, encodings):
    for e in reversed(encodings):
        if e.kind == 0 and e.algorithm == 0:
            frame = zlib.decompress(frame)
        elif e.kind == 0 and e.algorithm == 3:
            frame = e.settings + frame
    return frame


def _read_block(data, element, cluster_ticks, tracks, simple):
    number, at, all_ones = vint(data, element.start)
    relative, flags = struct.unpack('>hB', data[at:at + 3])
    lacing = flags >> 1 & 3
    sizes, at = lace_sizes(data, at + 3, element.end, lacing)
    encodings = next((t.encodings for t in tracks if t.number == number), [])
    frames = []
    for size in sizes:
        frames.append(undo(data[at:at + size], encodings))
        at += size
    return Block(number, cluster_ticks + relative, bool(flags & 0x80) if simple else True, lacing, frames, all_ones)


def _read_group(data, element, cluster_ticks, tracks):
    block = duration = None
    key = True
    for e in children(data, element.start, element.end):
        if e.id == 0xA1:
            block = _read_block(data, e, cluster_ticks, tracks, simple=False)
        elif e.id == 0x9B:
            duration = _uint(data[e.start:e.end])
        elif e.id == 0xFB:
            key = False
    block.key, block.duration, block.grouped = key, duration, True
    return block


def _read_cluster(data, element, doc):
    ticks = 0
    for e in children(data, element.start, element.end):
        if e.id == 0xE7:
            ticks = _uint(data[e.start:e.end])
        elif e.id == 0xA3:
            doc.blocks.append(_read_block(data, e, ticks, doc.tracks, simple=True))
        elif e.id == 0xA0:
            doc.blocks.append(_read_group(data, e, ticks, doc.tracks))
    doc.last_cluster_ticks = ticks


def _read_segment(data, segment, doc):
    doc.segment_unknown_size = segment.unknown_size
    doc.level_1 = list(children(data, segment.start, segment.end))
    for e in doc.level_1:
        if e.id == INFO:
            for c in children(data, e.start, e.end):
                if c.id == 0x2AD7B1:
                    doc.scale = _uint(data[c.start:c.end])
                elif c.id == 0x4489:
                    doc.duration = _float(data[c.start:c.end])
        elif e.id == TRACKS and not doc.tracks:
            doc.tracks = [_read_track(data, c, Track()) for c in children(data, e.start, e.end) if c.id == 0xAE]
    for e in doc.level_1:           # behind the head, which may lie at the file's end
        if e.id == CLUSTER:
            _read_cluster(data, e, doc)


def read(path):
    data = Path(path).read_bytes()
    doc = Document(size=len(data))
    for e in children(data, 0, len(data)):
        if e.id == EBML:
            doc.doc_type = next((_text(data[c.start:c.end]) for c in children(data, e.start, e.end)
                                 if c.id == 0x4282), '')
        elif e.id == SEGMENT:
            _read_segment(data, e, doc)
    return doc
