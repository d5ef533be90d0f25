"""Changes to a muxed file that no muxer at hand makes any more: headers stripped from the frames, track numbers of
any size, Clusters of unknown size. Only the touched elements are written anew; Cues and SeekHead, whose positions
would be wrong afterwards, are left out unless nothing moved."""
import struct
from pathlib import Path

import ebml
from craft import element, uint


def vint(value, length=None):
    length = length or next(n for n in range(1, 9) if value < (1 << 7 * n) - 1)
    return (value | 1 << 7 * length).to_bytes(length, 'big')


def stripping(settings):
    """ContentEncodings with one compression of the kind that leaves the first bytes of every frame out."""
    return element(0x6D80, element(0x6240, uint(0x5031, 0) + uint(0x5032, 1) + uint(0x5033, 0) + element(
        0x5034, uint(0x4254, 3) + element(0x4255, settings))))


class Rewriter:
    """strip: {track number: number of leading bytes}; renumber: {old track number: new one}"""

    def __init__(self, path, strip=(), renumber=()):
        self.data = Path(path).read_bytes()
        self.doc = ebml.read(path)
        self.renumber = dict(renumber)
        self.settings = {}
        for number, count in dict(strip).items():
            heads = {f[:count] for b in self.doc.blocks if b.track == number for f in b.frames}
            assert len(heads) == 1, 'the frames begin differently'
            self.settings[number] = heads.pop()

    def raw(self, e):
        return self.data[e.start:e.end]

    def map_children(self, e, change):
        """The element's payload with change(child) -> bytes or None (as it was) applied to each child."""
        out = b''
        for child in ebml.children(self.data, e.start, e.end):
            new = change(child)
            out += element(child.id, self.raw(child)) if new is None else new
        return out

    def track_entry(self, e):
        number = next(int.from_bytes(self.raw(c), 'big')
                      for c in ebml.children(self.data, e.start, e.end) if c.id == 0xD7)
        payload = self.map_children(e, lambda c: uint(0xD7, self.renumber.get(number, number))
                                    if c.id == 0xD7 else None)
        return element(0xAE, payload + (stripping(self.settings[number]) if number in self.settings else b''))

    def block(self, e):
        number, at, _ = ebml.vint(self.data, e.start)
        header = vint(self.renumber.get(number, number)) + self.data[at:at + 3]
        if number not in self.settings:
            return header + self.data[at + 3:e.end]
        lacing = header[-1] >> 1 & 3
        sizes, at = ebml.lace_sizes(self.data, at + 3, e.end, lacing)
        cut, frames = len(self.settings[number]), []
        for size in sizes:
            frames.append(self.data[at + cut:at + size])
            at += size
        laces = b''
        if lacing:
            header = header[:-1] + bytes([header[-1] & ~6 | 2])         # Xiph
            laces = bytes([len(frames) - 1]) + b''.join(
                b'\xff' * (len(f) // 255) + bytes([len(f) % 255]) for f in frames[:-1])
        return header + laces + b''.join(frames)

    def cluster_child(self, e):
        if e.id == 0xA3:
            return element(0xA3, self.block(e))
        if e.id == 0xA0:
            return element(0xA0, self.map_children(
                e, lambda c: element(0xA1, self.block(c)) if c.id == 0xA1 else None))
        return None

    def level_1(self, e):
        if e.id == ebml.TRACKS:
            return element(e.id, self.map_children(e, lambda c: self.track_entry(c) if c.id == 0xAE else None))
        if e.id == ebml.CLUSTER:
            return element(e.id, self.map_children(e, self.cluster_child))
        return element(e.id, self.raw(e)) if e.id == ebml.INFO else b''

    def write(self, path):
        header, segment = list(ebml.children(self.data, 0, len(self.data)))[:2]
        body = b''.join(self.level_1(e) for e in self.doc.level_1)
        Path(path).write_bytes(element(header.id, self.raw(header)) + element(segment.id, body))
        return path


def open_clusters(source, path):
    """The same file with every Cluster's size unknown; nothing moves."""
    data = bytearray(Path(source).read_bytes())
    for e in ebml.read(source).level_1:
        if e.id == ebml.CLUSTER:
            size_at = data.rindex(struct.pack('>I', ebml.CLUSTER), 0, e.start) + 4
            data[size_at:e.start] = ((1 << 7 * (e.start - size_at) + 1) - 1).to_bytes(e.start - size_at, 'big')
    Path(path).write_bytes(data)
    return path
