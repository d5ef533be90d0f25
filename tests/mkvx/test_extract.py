"""mkvx extract as a command; what its files hold is judged by other programs in tests/interop."""
import os
import pty
import re
import signal
import subprocess

import pytest


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
