"""HE-AAC access units. No encoder of ffmpeg's makes them; the library whose decoder the plug-in links has one."""
import ctypes
import math
import struct
from ctypes import POINTER, Structure, byref, c_int, c_ubyte, c_uint, c_void_p

AOT, BITRATE, SAMPLE_RATE, CHANNEL_MODE, TRANSPORT, SIGNALLING = 0x100, 0x101, 0x103, 0x106, 0x300, 0x302
RAW, EXPLICIT = 0, 2
INPUT_AUDIO, OUTPUT_BITSTREAM = 0, 3
RATE = 44100
FRAME = 2048                # samples per channel


class Info(Structure):
    _fields_ = [(name, c_uint) for name in ('max_out', 'max_ancillary', 'fill', 'channels', 'frame_length', 'delay',
                                            'core_delay')] + [('config', c_ubyte * 64), ('config_size', c_uint)]


class Buffers(Structure):
    _fields_ = [('count', c_int), ('data', POINTER(c_void_p)), ('kinds', POINTER(c_int)), ('sizes', POINTER(c_int)),
                ('element_sizes', POINTER(c_int))]


class InArgs(Structure):
    _fields_ = [('samples', c_int), ('ancillary', c_int)]


class OutArgs(Structure):
    _fields_ = [('bytes', c_int), ('samples', c_int), ('ancillary', c_int), ('reservoir', c_int)]


def one_buffer(data, kind, size, element_size):
    return Buffers(1, (c_void_p * 1)(ctypes.cast(data, c_void_p)), (c_int * 1)(kind), (c_int * 1)(size),
                   (c_int * 1)(element_size))


def tone(start, count):
    """Two channels that differ."""
    values = (round(amplitude * math.sin(2 * math.pi * 440 * t / RATE) + 3000 * math.sin(2 * math.pi * 9000 * t / RATE))
              for t in range(start, start + count) for amplitude in (8000, 2000))
    return struct.pack('<%dh' % (2 * count), *values)


def encode(seconds):
    """(AudioSpecificConfig, access units) of a stereo tone with high frequencies; the configuration names SBR."""
    library = ctypes.CDLL('libfdk-aac.so.2')
    handle = c_void_p()
    assert library.aacEncOpen(byref(handle), 0, 2) == 0
    for key, value in ((AOT, 5), (SAMPLE_RATE, RATE), (CHANNEL_MODE, 2), (BITRATE, 48000), (TRANSPORT, RAW),
                       (SIGNALLING, EXPLICIT)):
        assert library.aacEncoder_SetParam(handle, key, value) == 0
    assert library.aacEncEncode(handle, None, None, None, None) == 0
    info = Info()
    assert library.aacEncInfo(handle, byref(info)) == 0 and info.frame_length == FRAME
    out = ctypes.create_string_buffer(info.max_out)
    units = []
    for start in range(0, int(seconds * RATE), FRAME):
        result = OutArgs()
        assert library.aacEncEncode(handle, byref(one_buffer(tone(start, FRAME), INPUT_AUDIO, FRAME * 4, 2)),
                                    byref(one_buffer(out, OUTPUT_BITSTREAM, len(out), 1)), byref(InArgs(FRAME * 2, 0)),
                                    byref(result)) == 0
        if result.bytes:
            units.append(out.raw[:result.bytes])
    library.aacEncClose(byref(handle))
    return bytes(info.config[:info.config_size]), units
