"""Where a seek has to land, computed from the Cues and blocks of a file by the small reader beside this folder.

A seek goes through all cue points that name the master track, from the last of a Cues element to its first, and takes
the first key frame of its own track in a Cluster whose cue time is not behind the target; a frame behind the target
that is no key frame ends the look into that Cluster. A target of 0 is the start of the file, one at the duration or
behind it, or in front of 0, the end."""
import struct
from dataclasses import dataclass, field
from pathlib import Path

import ebml
import rules

CUE_POINT, CUE_TIME, CUE_POSITIONS, CUE_TRACK, CUE_CLUSTER = 0xBB, 0xB3, 0xB7, 0xF7, 0xF1


@dataclass
class Layout:
    doc: ebml.Document
    clusters: dict = field(default_factory=dict)    # position -> [Block]
    order: list = field(default_factory=list)       # positions in file order
    ticks: dict = field(default_factory=dict)       # position -> the Cluster's own time
    cues: list = field(default_factory=list)        # one list of (ticks, [(track, position)]) per Cues element
    end_ticks: float = 0.0                          # the duration that seeking goes by
    unit_of: dict = field(default_factory=dict)     # id(block) -> the unit that is delivered for it


def _uint(data, e):
    return int.from_bytes(data[e.start:e.end], 'big')


def _point(data, e):
    time, positions = 0, []
    for c in ebml.children(data, e.start, e.end):
        if c.id == CUE_TIME:
            time = _uint(data, c)
        elif c.id == CUE_POSITIONS:
            fields = {f.id: _uint(data, f) for f in ebml.children(data, c.start, c.end)}
            positions.append((fields[CUE_TRACK], fields[CUE_CLUSTER]))
    return time, positions


def read(path):
    data = Path(path).read_bytes()
    doc = ebml.read(path)
    layout = Layout(doc, end_ticks=doc.duration)
    segment = next(e for e in ebml.children(data, 0, len(data)) if e.id == ebml.SEGMENT)
    header = segment.start
    blocks = iter(doc.blocks)
    for e in doc.level_1:
        if e.id == ebml.CLUSTER:
            position = header - segment.start
            children = list(ebml.children(data, e.start, e.end))
            layout.order.append(position)
            layout.ticks[position] = next(_uint(data, c) for c in children if c.id == 0xE7)
            layout.clusters[position] = [next(blocks) for c in children if c.id in (0xA3, 0xA0)]
        elif e.id == ebml.CUES:
            layout.cues.append([_point(data, c) for c in ebml.children(data, e.start, e.end) if c.id == CUE_POINT])
        header = e.end
    assert next(blocks, None) is None
    master = rules.master_track(doc)
    if not layout.cues:                 # the Clusters are visited instead, and the last one's time is the duration
        layout.cues = [[(layout.ticks[p], [(master.number, p)]) for p in layout.order]]
        layout.end_ticks = struct.unpack('f', struct.pack('f', layout.ticks[layout.order[-1]]))[0]
    for track in rules.offered(doc):
        if track.type != ebml.SUBTITLE:
            own = [b for b in doc.blocks if b.track == track.number]
            units = rules.frame_units(doc, track)
            assert len(own) == len(units), 'one unit per block'
            layout.unit_of.update((id(b), u) for b, u in zip(own, units))
    return layout


def us(layout, ticks):
    return rules.microseconds(layout.doc, ticks)


def _first_from(layout, start, number, passed=0):
    blocks = [b for p in layout.order[start:] for b in layout.clusters[p]]
    return next((b for b in blocks[passed:] if b.track == number), None)


def _look(layout, position, number, target):
    """The key frame that a look into the Cluster ends at, None without one, and how many blocks it passed."""
    passed = 0
    for passed, block in enumerate(layout.clusters[position], 1):
        if block.track != number:
            continue
        if block.key:
            return block, passed
        if us(layout, block.ticks) > target:
            break
    return None, passed


def land(layout, track, target):
    """The block that a seek of `track` to `target` microseconds delivers, None at the end."""
    end_us = int(layout.end_ticks * layout.doc.scale) // 1000
    if target < 0 or target >= end_us:
        return None
    if target == 0:
        return _first_from(layout, 0, track.number)
    master = rules.master_track(layout.doc).number
    tried, passed = None, 0
    for cues in layout.cues:
        for ticks, positions in reversed(cues):
            if target < us(layout, ticks):
                continue
            for number, position in positions:
                if number != master or position == tried:
                    continue
                tried = position
                block, passed = _look(layout, position, track.number, target)
                if block:
                    return block
    return _first_from(layout, layout.order.index(tried) if tried is not None else 0, track.number, passed)
