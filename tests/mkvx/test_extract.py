"""mkvx extract as a command; what its files hold is judged by other programs in tests/interop."""
import os
import pty
import re
import signal
import subprocess

import pytest

import craft


@pytest.mark.parametrize('track, out, code, told', [
    ('9', 'x', 2, 'there is no index 9'), ('0', 'film.mkv', 2, 'the file to read'), ('0', 'no/such/folder', 1, 'No such file'),
    ('0', '.', 1, 'Is a directory'), ('0', '/dev/full', 1, 'No space left'),
], ids=lambda value: str(value))
def test_what_cannot_be_written(mkvx, sample, write, track, out, code, told):
    film = write('film.mkv', sample.read_bytes())
    run = mkvx('extract', 'film.mkv', '--track', track, '-o', out, cwd=film.parent)
    assert run.code == code and run.out == '' and run.err.count('\n') == 1 and told in run.err
    assert os.listdir(film.parent) == ['film.mkv'] and film.read_bytes() == sample.read_bytes()
    assert os.path.exists('/dev/full')


def test_progress_on_a_terminal(binary, sample, tmp_path):
    """A line that renews itself, and is wiped in the end."""
    terminal, its_end = pty.openpty()
    run = subprocess.Popen([binary, 'extract', sample, '--track', '0', '-o', tmp_path / 'slow', '--late', '2ms'],
                           stdout=subprocess.DEVNULL, stderr=its_end)
    os.close(its_end)
    seen = b''
    while not re.search(rb'mkvx: .*slow: \d+\.\d MB, \d+ %, \d+\.\d MB/s, \d:\d\d left\x1b\[K', seen):
        seen += os.read(terminal, 4096)
    run.send_signal(signal.SIGINT)
    assert run.wait(60) == 130
    last = os.read(terminal, 1 << 16)
    assert re.search(rb'\r\x1b\[Kmkvx: .*interrupted after \d+ units?, which .*slow holds\r\n$', last), last
    os.close(terminal)


# Of the three frames a, bb and ccc in one block, or aa, bb and cc: by lacing. Without one they are one frame.
LACED = [
    (0, b'abbccc', [b'abbccc']), (1, b'\2\1\2abbccc', [b'a', b'bb', b'ccc']), (2, b'\2aabbcc', [b'aa', b'bb', b'cc']),
    (3, b'\2\x81\xc0abbccc', [b'a', b'bb', b'ccc']), (1, b'\1\xff\2' + b'x' * 257 + b'y', [b'x' * 257, b'y']), (2, b'\0abc', [b'abc']),
]


def adts(frame):
    """AAC LC, 44.1 kHz, two channels, without a checksum (ISO/IEC 13818-7, 6.2)."""
    bits = f'{0xFFF1:016b}' + '01' + '0100' + '0' + '010' + '0000' + f'{len(frame) + 7:013b}' + '1' * 11 + '00'
    return int(bits, 2).to_bytes(7, 'big') + frame


def aac(*blocks):
    return craft.matroska([craft.audio(1, 'A_AAC', craft.private(b'\x12\x10'), rate=44100.0)], craft.cluster(0, *blocks))


@pytest.mark.parametrize('lacing, payload, frames', LACED)
def test_laced_aac_gets_a_header_a_frame(mkvx, write, tmp_path, lacing, payload, frames):
    path = write('laced.mka', aac(craft.simple_block(1, 0, b'first'), craft.simple_block(1, 23, payload, lacing=lacing), craft.simple_block(1, 99, b'last')))
    told = mkvx('extract', '--track', 0, '-o', tmp_path / 'out.aac', '--json', path).json()
    written = (tmp_path / 'out.aac').read_bytes()
    assert written == b''.join(map(adts, [b'first', *frames, b'last']))
    assert (told['form'], told['units'], told['unreadable'], told['bytes']) == ('AAC in ADTS', 3, 0, len(written))


@pytest.mark.parametrize('block', [craft.bad_laces(1, 23), craft.simple_block(1, 23, b'\2\1\xf0a', lacing=1),
                                   craft.simple_block(1, 23, b'\2\x81\x80a', lacing=3)], ids=['xiph', 'sum', 'ebml'])
def test_aac_whose_frames_cannot_be_told_apart_is_refused(mkvx, write, tmp_path, block):
    data = aac(craft.simple_block(1, 0, b'first'), block)
    run = mkvx('extract', '--track', 0, '-o', tmp_path / 'out.aac', write('bad.mka', data))
    assert run.code == 1 and run.out == '' and run.err.count('\n') == 1
    told = re.search(r'the block at (\d+) holds several frames, and where each of them ends cannot be told', run.err)
    assert data.index(block) <= int(told[1]) < len(data)
    assert os.listdir(tmp_path) == ['bad.mka']
