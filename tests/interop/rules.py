"""What mkvx has to say about a file, computed from the blocks that ebml.py found.

This is the one place that states where the listing differs from a plain list of frames on purpose:

 1. One unit per block, its laces joined, without the lacing header; Vorbis laces come apart, each at the block's time.
 2. Times are microseconds, truncated, and the block's own: CodecDelay is not subtracted.
 3. H.264 and HEVC come with start codes: every 4-byte length becomes 00 00 00 01, unless the track's first unit
    already begins with a start code.
 4. Tracks whose codec has no MIME type on the device, or is of a kind that is not offered, are absent (OFFERED).
 5. MPEG-4 part 2: configuration headers in front of the first picture move into the configuration (m4v_headers).
 6. Subtitles are collected while the master track is read, and handed out between its units (subtitle_units).
 7. The track's language is its Name, else its Language, without the last character; Chinese and English are spelt out.
 8. Without Cues the file is indexed by a scan, and its duration becomes the last Cluster's time in single precision.
 9. A TrackNumber stored with all its value bits set, 127 in one byte, reads as an unknown length: no track gets the
    block.
"""
import hashlib
import struct
from dataclasses import dataclass

from ebml import AUDIO, CUES, SUBTITLE, VIDEO

AVC, HEVC, MPEG4 = 'video/avc', 'video/hevc', 'video/mp4v-es'
AAC, VORBIS, LPCM = 'audio/mp4a-latm', 'audio/vorbis', 'audio/lpcm'
MIXED = ('video/mpeg1', 'video/mpeg2', 'video/mixer')        # the decoder wants a bitmap header in the configuration

# CodecID prefix -> MIME type and the four-character code that stands for it; what is not here is not offered.
OFFERED = {
    VIDEO: [('V_MPEG4/ISO/AVC', AVC, b'AVC1'), ('V_MPEGH/ISO/HEVC', HEVC, b'HEVC'), ('V_MPEG4/', MPEG4, b'MP4V'),
            ('V_MPEG1', 'video/mpeg1', b'MPG1'), ('V_MPEG2', 'video/mpeg2', b'MPG2'),
            ('V_VP9', 'video/x-vnd.on2.vp9', b'VP-9')],
    AUDIO: [('A_MPEG/L3', 'audio/mpeg', b''), ('A_MPEG/L2', 'audio/mpeg', b''), ('A_AC3', 'audio/ac3', b''),
            ('A_DTS', 'audio/dts', b''), ('A_PCM/INT/LIT', 'audio/raw', b''), ('A_PCM/INT/BIG', LPCM, b''),
            ('A_AAC', AAC, b''), ('A_FLAC', 'audio/flac', b''), ('A_VORBIS', VORBIS, b'')],
    SUBTITLE: [('S_TEXT/UTF8', 'text/utf-8', b''), ('S_TEXT/ASS', 'text/ass', b''), ('S_TEXT/SSA', 'text/ass', b'')],
}
WAVE_TAGS = {0x01: 'audio/raw', 0x02: 'audio/adpcm', 0x06: 'audio/g711-alaw', 0x07: 'audio/g711-mlaw',
             0x11: 'audio/adpcm', 0x20: 'audio/adpcm', 0x5346: 'audio/adpcm', 0x161: 'audio/wma'}
BITMAP_TAGS = {b'H264': AVC, b'FMP4': MPEG4, b'XVID': MPEG4, b'DIVX': MPEG4, b'DIV4': MPEG4, b'DIV2': MPEG4,
               b'DX50': 'video/ffmpeg', b'H263': 'video/3gpp', b'MP42': 'video/mixer', b'MP43': 'video/mixer',
               b'DIV3': 'video/mixer', b'WMV1': 'video/mixer', b'WMV2': 'video/mixer', b'FLV1': 'video/mixer'}
# Subtitle kinds that are queued while the master track is read, offered or not.
COLLECTED = ('S_TEXT/UTF8', 'S_TEXT/ASS', 'S_TEXT/SSA', 'S_VOBSUB', 'S_IMAGE/BMP', 'S_KATE', 'S_TEXT/USF')
TYPE_NAMES = {VIDEO: 'video', AUDIO: 'audio', SUBTITLE: 'subtitle'}


@dataclass(frozen=True)
class Unit:
    time_us: int
    sync: int
    size: int
    sha1: str
    end_us: int = None


def unit(time_us, sync, data, end_us=None):
    return Unit(time_us, int(sync), len(data), hashlib.sha1(data).hexdigest(), end_us)


def is_bitmap_track(track):
    return track.codec_id == 'V_MS/VFW/FOURCC'


def mime_and_tag(track):
    """(MIME type or None when the track is not offered, four-character code)."""
    if is_bitmap_track(track):
        tag = track.private[16:20]
        return BITMAP_TAGS.get(tag.upper()), tag
    if track.codec_id == 'A_MS/ACM':
        return WAVE_TAGS.get(struct.unpack('<H', track.private[:2])[0]), b''
    for prefix, mime, tag in OFFERED.get(track.type, []):
        if track.codec_id.startswith(prefix):
            return mime, tag
    return None, b''


def offered(doc):
    """The tracks that the listing numbers 0, 1, 2, ..."""
    return [t for t in doc.tracks if mime_and_tag(t)[0]]


def blocks_of(doc, track):
    return [b for b in doc.blocks if b.track == track.number and not b.all_ones]


def microseconds(doc, ticks):
    return ticks * doc.scale // 1000


def to_start_codes(data):
    out = bytearray(data)
    at = 0
    while at + 4 <= len(out):
        length = int.from_bytes(out[at:at + 4], 'big')
        out[at:at + 4] = b'\0\0\0\1'
        at += 4 + length
    assert at == len(out), 'not a sequence of units with 4-byte lengths'
    return bytes(out)


def m4v_headers(frame):
    """Length of what stands before the first group of pictures or picture."""
    starts = [p for p in (frame.find(b'\0\0\1\xb3'), frame.find(b'\0\0\1\xb6')) if p >= 0]
    return min(starts)


def m4v_headers_are_cut(track):
    private = track.private
    return (mime_and_tag(track)[0] == MPEG4 and len(private) >= 40
            and struct.unpack('<I', private[:4])[0] >= 40
            and private[16:20] not in (b'DIV3', b'div3', b'DIV4', b'div4'))


def frame_units(doc, track):
    """The units of a video or audio track."""
    mime = mime_and_tag(track)[0]
    blocks = blocks_of(doc, track)
    rewrite = mime in (AVC, HEVC) and blocks and blocks[0].frames[0][:4] != b'\0\0\0\1'
    result = []
    for i, block in enumerate(blocks):
        payloads = block.frames if mime == VORBIS else [b''.join(block.frames)]
        if rewrite:
            payloads = [to_start_codes(p) for p in payloads]
        if i == 0 and m4v_headers_are_cut(track):
            payloads = [payloads[0][m4v_headers(payloads[0]):]]
        result += [unit(microseconds(doc, block.ticks), block.key, p) for p in payloads]
    return result


def master_track(doc):
    """The first video track, else the first audio track: reading it collects the subtitles."""
    return next((t for kind in (VIDEO, AUDIO) for t in doc.tracks if t.type == kind), None)


@dataclass
class Event:
    number: int
    time_us: int
    sync: int
    end_us: int
    data: bytes


def collect(doc, queue, block, last_number):
    """Queues a subtitle block. An event that directly follows one of the same track, still queued, whose text has the
    nine fields of an SSA event, takes that event's text in and its place."""
    time_us = microseconds(doc, block.ticks)
    event = Event(block.track, time_us, int(block.key), time_us + microseconds(doc, block.duration or 0),
                  b''.join(block.frames))
    if queue and last_number == block.track:
        before = queue[-1].data
        comma = 0
        for _ in range(8):
            comma = before.find(b',', comma + 1)
            if comma < 0:
                break
        if comma > 0:
            event.data += b'\n' + before[comma + 1:]
            event.time_us = queue.pop().time_us
    queue.append(event)


def subtitle_units(doc, track):
    """A pass over the master track's units; after each, and once more after the last, the queue is emptied. Its front
    record goes to the track whose index is the record's TrackNumber minus one, others are dropped."""
    master = master_track(doc)
    if master is None or mime_and_tag(master)[0] is None:
        return []
    wanted = offered(doc).index(track) + 1
    queue, last_number, result = [], None, []

    def drain():
        result.extend(unit(e.time_us, e.sync, e.data, e.end_us) for e in queue if e.number == wanted)
        queue.clear()

    for block in (b for b in doc.blocks if not b.all_ones):
        if block.track == master.number:
            drain()
        else:
            other = doc.track(block.track)
            if other and other.type == SUBTITLE and other.codec_id.startswith(COLLECTED):
                collect(doc, queue, block, last_number)
                last_number = block.track
    drain()
    return result


def units(doc, track):
    return subtitle_units(doc, track) if track.type == SUBTITLE else frame_units(doc, track)


# --- what `mkvx info` says -------------------------------------------------

def language(track):
    if track.type == SUBTITLE or track.name:
        return track.name.encode()[:-1].decode(errors='replace')
    text = track.language[:-1]
    if not track.language:
        return None
    return '简体中文' if text.startswith('ch') else '英文' if text.startswith('en') else text


def descriptor_size(n):
    """Seven bits per byte, the least significant group first."""
    out = bytearray()
    while n > 127:
        out.append(n & 0x7F | 0x80)
        n >>= 7
    return bytes(out) + bytes([n])


def esds(config):
    """The decoder configuration in an ES descriptor (the shape of ISO/IEC 14496-1), or None without one."""
    if not config:
        return None
    inner = len(config) + len(descriptor_size(len(config)))
    outer = inner + 1 + len(descriptor_size(inner + 1))
    object_type = b'\x40' if len(config) <= 127 else b'\x01'
    record = (b'\x03' + descriptor_size(outer + 17) + bytes(3) + b'\x04' + descriptor_size(inner + 14) +
              object_type + bytes(12) + b'\x05' + descriptor_size(len(config)) + config)
    return record[:outer + 18 + len(descriptor_size(outer + 14))]


def bitmap_header(track, tag):
    return struct.pack('<IiiHH4s', 40, track.width, track.height, 0, 0, tag) + bytes(20)


def vorbis_headers(private):
    first, second = private[1], private[2]
    return private[3:3 + first], private[3 + first + second:]


def config(doc, track):
    """Configuration records by name; a value of True stands for one that is made from the stream itself."""
    mime, tag = mime_and_tag(track)
    private = track.private
    if track.type == SUBTITLE or mime == LPCM:
        records = {}
    elif mime == AVC:
        records = {'avcc': True if is_bitmap_track(track) else private}
    elif mime == HEVC:
        records = {'hvcc': private}
    elif mime == VORBIS:
        records = dict(zip(('vinf', 'vboo'), vorbis_headers(private)))
    elif mime in MIXED:
        records = {'esds': esds(bitmap_header(track, tag) + private)}
    elif m4v_headers_are_cut(track):
        first = next((b.frames[0] for b in blocks_of(doc, track)), b'')
        records = {'esds': esds(first[:m4v_headers(first)] or private)}
    else:
        records = {'esds': esds(private)}
    return {k: v if v is True else v.hex() for k, v in records.items() if v is not None}


def container_mime(doc):
    if doc.doc_type == 'webm':
        return 'video/webm'
    return 'audio/x-matroska' if [t.type for t in doc.tracks] == [AUDIO] else 'video/x-matroska'


def duration_ns(doc):
    if doc.count(CUES):
        return int(doc.duration * doc.scale)
    return int(struct.unpack('f', struct.pack('f', doc.last_cluster_ticks))[0] * doc.scale)


def track_info(doc, index, track):
    length_ns = duration_ns(doc)
    duration_us = (length_ns + 500) // 1000
    info = {'index': index, 'number': track.number, 'type': TYPE_NAMES[track.type], 'mime': mime_and_tag(track)[0],
            'duration_us': duration_us, 'language': language(track)}
    if track.type == VIDEO:
        info.update(width=track.width, height=track.height)
        if not any(t.type == VIDEO for t in offered(doc)[:index]):
            info['thumbnail_us'] = duration_us // 4
    if track.type == AUDIO:
        info.update(sample_rate=int(track.sample_rate), channels=track.channels)
    if track.type != SUBTITLE:
        info['bit_rate'] = doc.size * 8000000000 // length_ns if length_ns else 0
        if track.codec_id == 'A_MS/ACM':
            info['bit_rate'] = struct.unpack('<I', track.private[8:12])[0] * 8 or info['bit_rate']
    return {k: v for k, v in info.items() if v is not None}
