"""Exit codes and error sentences: 2 for a wrong command line, 1 for a file that cannot be used, and always exactly one
sentence on stderr that names what is wrong."""
import contextlib
import fcntl
import json
import os
import pty
import re
import shlex
import shutil
import signal
import struct
import subprocess
import termios

import pytest

import craft
from waiting import until


def sentence(run):
    assert run.err.startswith('mkvx: ') and run.err.count('\n') == 1, run.err
    return run.err


@pytest.mark.parametrize('args', [
    ['frobnicate', 'x.mkv'], ['info'], ['info', '--format', 'yaml', 'x.mkv'], ['info', '--format', 'table', '--json', 'x.mkv'], ['packets', '--limit', '0', 'x.mkv'], ['packets', '--limit', '-1', 'x.mkv'], ['tree', '--at', '-1', 'x.mkv'],
    *[['packets', f'--track={choice}', 'x.mkv'] for choice in ['one', '-1', '#', '#x', '1 ', '99999999999999999999']],
    ['info', '--log', 'loud', 'x.mkv'], *[['info', f'--short-reads={n}', 'x.mkv'] for n in ('0', '-1', '99999999999999999999')], ['info', '--no-such-option', 'x.mkv'],
    *[['seek', 'x.mkv', '--to', time] for time in ('', 'soon', '1:60', '00:60:00', '00:00:60', '1:2:3.1234567', '5 s', '0.5us', '90', '99999', '1.5', '99999999999999999999')],
    ['bench', 'mux', 'x.mkv'], ['bench', 'open', '--source', 'tape', 'x.mkv'],
], ids=' '.join)
def test_wrong_usage(mkvx, args):
    run = mkvx(*args)
    assert run.code == 2 and run.out == ''
    sentence(run)


@pytest.mark.parametrize('args', [['--help'], ['sniff', '--help'], ['info', '--help'], ['packets', '--help'],
                                  ['bench', '--help'], ['--version']], ids=' '.join)
def test_help_is_no_error(mkvx, args):
    run = mkvx(*args)
    assert run.code == 0 and run.err == '' and 'mkvx' in run.out
    assert len(args) == 1 or 'Example: mkvx ' + args[0] in run.out


def test_without_arguments(mkvx):
    run = mkvx()
    assert run.code == 2 and run.out == '' and run.err.startswith('Usage: mkvx COMMAND')
    assert 'mkvx check film.mkv' in run.err.splitlines()[1]


@pytest.mark.parametrize('word, meant', [('chek', 'check'), ('chekc', 'check'), ('Packets', 'packets'), ('extracts', 'extract'),
                                         ('xyzzy', None)])
def test_misspelt_command(mkvx, word, meant):
    for run in mkvx(word, 'x.mkv'), mkvx('help', word):
        assert run.code == 2 and (f'did you mean {meant}?' if meant else f'no command {word} (') in sentence(run)


def test_every_help_ends_with_an_example_that_is_understood(mkvx, binary, sample, tmp_path):
    shutil.copy(sample, tmp_path / 'film.mkv')
    shutil.copy(binary.parent.parent / 'lib/libmatroska_ext.so', tmp_path / 'other.so')
    for results in 'before.jsonl', 'after.jsonl', 'part-1.jsonl':
        (tmp_path / results).write_text(mkvx('check', '--format', 'jsonl', sample).out)
    commands = re.findall(r'^  (\w+) ', mkvx('--help').out.split('Subcommands:')[1].split('Exit codes:')[0], re.M)
    assert len(commands) >= 16
    for command in commands:
        told = mkvx(command, '--help').out
        assert mkvx('help', command).out == told and ('--format ' in told) == ('--json ' in told)
    for command in [None, *commands]:
        text = mkvx(*filter(None, [command]), '--help').out.split('Example:')[-1]
        examples = [line.strip() for line in text.splitlines() if line.strip()]
        assert examples and all(e.startswith('mkvx ' + (command or '')) for e in examples), command
        for example in examples:
            args = [a for a in shlex.split(example, comments=True)[1:] if '*' not in a or a == '*.mkv']
            args = ['film.mkv' if a == '*.mkv' else a for a in args]
            run = subprocess.run([binary, *args], cwd=tmp_path, capture_output=True, text=True)
            assert run.returncode in ((0, 1) if '/media' in example else (0,)), (example, run.stderr)


def test_manual_and_completion_tell_what_the_help_tells(mkvx):
    """Every command, and every option of each; the manual is one that groff has nothing to say of."""
    commands = re.findall(r'^  (\w+) ', mkvx('--help').out.split('Subcommands:')[1].split('Exit codes:')[0], re.M)
    manual = mkvx('help', '--man').out
    done = subprocess.run(['groff', '-man', '-Tutf8', '-ww', '-z'], input=manual, capture_output=True, text=True)
    assert (done.returncode, done.stderr) == (0, '')
    forms = [manual.replace('\\-', '-'), mkvx('help', '--completion', 'bash').out, mkvx('help', '--completion', 'zsh').out]
    for command in commands:
        options = set(re.findall(r'(?<![\w-])--[a-z-]+', mkvx(command, '--help').out.split('Example:')[0]))
        assert [word for form in forms for word in {command, *options} - {'--help'} if word not in form] == [], command
    assert subprocess.run(['bash', '-n'], input=forms[1], text=True).returncode == 0


@pytest.mark.parametrize('args', [['check', 'FILE'], ['check', '--help'], ['mend', '--dry-run', '-o', 'film.mkv', 'FILE'], ['explain', 'CodecPrivate', 'FILE']], ids=' '.join)
def test_lines_are_no_wider_than_the_terminal(mkvx, binary, sample, args):
    args = [sample.parent / 'silent.mkv' if arg == 'FILE' else arg for arg in args]
    master, terminal = pty.openpty()
    fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack('4H', 24, 60, 0, 0))
    with subprocess.Popen([binary, *args], stdout=terminal, env={**os.environ, 'TERM': 'dumb'}):
        os.close(terminal)
        told = b''
        with contextlib.suppress(OSError):  # when the other end is closed
            while part := os.read(master, 4096):
                told += part
    lines = told.decode().splitlines()
    assert max(len(line) for line in lines if 'ffmpeg' not in line and len(line.split()) > 1) <= 60
    assert ' '.join(lines).split() == mkvx(*args).out.split()


# Bytes of the sample: within its Clusters, of which opening reads nothing, within its head, and within the EBML header.
MEDIA, HEAD, START = range(100000, 170000), range(4096, 8192), range(4096)


# The sample comes over the network up to there; what the tool has told until then is known. A result is told as
# 'lines', 'jsonl' or 'json' of what was found, or not at all.
@pytest.mark.parametrize('args, gate, shape', [
    (['packets', '--format', 'csv'], MEDIA, 'lines'), (['packets', '--format', 'jsonl'], MEDIA, 'lines'),
    (['packets', '--format', 'json'], MEDIA, 'json'), (['tree', '--all'], MEDIA, 'lines'),
    (['tree', '--all', '--format', 'json'], MEDIA, 'json'), (['explain', '--format', 'json', 'SimpleBlock'], MEDIA, 'json'),
    (['decode', '--format', 'json'], MEDIA, 'json'), (['cost', '--demux', '--seeks', '0', '--format', 'json'], MEDIA, 'json'),
    (['extract', '--track', '0', '-o', 'OUT'], MEDIA, 'file'),
    (['seek', '--track', '0', '--to', '1us', '--to', '3000000', '--to', '7000000', '--format', 'jsonl'], MEDIA, 'lines'),
    (['late', '--track', '0', '--at', '150', '--by', '500000'], MEDIA, 'nothing'),
    (['sniff'], START, 'nothing'), (['info'], HEAD, 'nothing'), (['info'], START, 'nothing'), (['check'], START, 'nothing'), (['index'], HEAD, 'nothing'), (['chapters'], HEAD, 'nothing'),
    (['report', '-o', 'OUT'], MEDIA, 'nothing'),
], ids=lambda value: '-'.join(value[:3:2]) if isinstance(value, list) else '')
def test_interruption(binary, mkvx, sample, serve, tmp_path, args, gate, shape):
    saved = tmp_path / 'out'
    args = [saved if arg == 'OUT' else arg for arg in args]
    whole = mkvx(*args, sample).out
    whole_size = saved.stat().st_size if saved.exists() else 0
    saved.unlink(missing_ok=True)
    server = serve(sample.read_bytes(), gate)
    with (tmp_path / 'stdout').open('w+') as stdout:
        run = subprocess.Popen([binary, *args, server.url('held'), '--url-block', '4'], stdout=stdout,
                               stderr=subprocess.PIPE, text=True)
        server.wait_until_held()
        run.send_signal(signal.SIGINT)
        server.go_on()
        err = run.communicate(timeout=60)[1]
        stdout.seek(0)
        out = stdout.read()
    assert run.returncode == 130 and err.count('\n') == 1 and re.match('mkvx: .*interrupted after ', err), err
    assert bool(out) == (shape != 'nothing') and (not out or out.endswith('\n'))
    if shape == 'lines':
        assert whole.startswith(out) and len(out) < len(whole)
    if shape == 'json':
        assert isinstance(json.loads(out), dict)
    assert (0 < saved.stat().st_size < whole_size) if shape == 'file' else not saved.exists()


@pytest.mark.parametrize('asked', [signal.SIGINT, signal.SIGTERM])
def test_interruption_while_standard_input_is_awaited(binary, asked):
    with subprocess.Popen([binary, 'info', '-'], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as run:
        run.stdin.write(b'\x1a')
        run.stdin.flush()
        until(lambda: fcntl.ioctl(run.stdin, termios.FIONREAD, bytes(4)) == bytes(4))     # it was taken
        run.send_signal(asked)
        assert run.wait(60) == 130
        assert run.stdout.read() == b'' and run.stderr.read() == b'mkvx: standard input: interrupted after 1 byte\n'


def test_progress(binary, sample):
    """On a slow source there is a line a second; each is of its own, and says more."""
    runs = [subprocess.Popen([binary, *args, '--progress', 'json', '--late', late, sample], stdout=subprocess.DEVNULL,
                             stderr=subprocess.PIPE, text=True)
            for args, late in ((['packets'], '10ms'), (['tree', '--all'], '0.1s'), (['decode'], '20ms'),
                               (['cost', '--demux', '--seeks', '0'], '5ms'), (['extract', '--track', '0', '-o', '/dev/null'], '10ms'))]
    for run in runs:
        first, second = [json.loads(run.stderr.readline())['progress'] for _ in range(2)]
        run.kill()
        run.communicate()
        assert second['bytes'] > first['bytes'] and second['seconds'] > first['seconds'] >= 1
        assert second['seconds_left'] > 0


@pytest.mark.parametrize('command', [['sniff'], ['info'], ['packets'], ['bench', 'open']], ids=lambda c: c[0])
@pytest.mark.parametrize('kind, reason', [('missing', 'No such file'), ('folder', 'Is a directory'), ('pipe', '')])
def test_unreadable(mkvx, tmp_path, command, kind, reason):
    path = tmp_path / 'thing.mkv'
    if kind == 'folder':
        path.mkdir()
    if kind == 'pipe':
        os.mkfifo(path)
    run = mkvx(*command, path)
    assert run.code == 1
    assert str(path) in sentence(run) and reason in run.err


@pytest.mark.parametrize('command', [['info'], ['packets'], ['bench', 'demux']], ids=lambda c: c[0])
@pytest.mark.parametrize('data', [b'', b'RIFF\x10\0\0\0WAVE', b'\x1a\x45\xdf', b'\x1a\x45\xdf\xa3',
                                  craft.matroska([])[:40], craft.matroska([])],
                         ids=['empty', 'wav', 'three bytes', 'magic only', 'cut in the head', 'no track entry'])
def test_nothing_to_use(mkvx, write, command, data):
    path = write('broken.mkv', data)
    run = mkvx(*command, path)
    assert run.code == 1 and str(path) in sentence(run)
    assert command == ['bench', 'demux'] or run.out == ''


@pytest.mark.parametrize('choice, told', [('3', 'there is no index 3'), ('#4', 'no offered track has the track number 4')])
def test_track_that_is_not_there(mkvx, sample, choice, told):
    run = mkvx('packets', '--track', choice, sample)
    assert run.code == 2 and run.out == ''
    assert str(sample) in sentence(run) and told in run.err


@pytest.mark.parametrize('command', [['packets'], ['seek', '--to', '0'], ['late', '--at', '1', '--by', '1us'],
                                     ['extract', '-o', '/dev/null', '--format', 'json'], ['decode', '--frames', '1']],
                         ids=lambda command: command[0])
def test_track_by_its_number(mkvx, sample, command):
    by_index, by_number = (mkvx(*command, '--track', choice, sample) for choice in ['1', '#2'])
    assert by_number.code == 0 and by_number.out == by_index.out != ''


@pytest.mark.parametrize('make', [lambda write: '/no/such/plugin.so', lambda write: write('text.so', b'no library'),
                                  lambda write: 'libz.so.1'], ids=['missing', 'no library', 'not beside us'])
def test_plugin_that_cannot_be_used(mkvx, sample, write, make):
    path = make(write)
    run = mkvx('--plugin', path, 'info', sample)
    assert run.code == 1 and run.out == '' and str(path) in sentence(run)


def test_full_disk_is_told(binary, sample):
    with open('/dev/full', 'w') as full:
        run = subprocess.run([binary, 'info', sample], stdout=full, stderr=subprocess.PIPE, text=True)
    assert run.returncode == 1 and 'cannot write' in run.stderr


VORBIS = bytes([2, 3, 3]) + b'\1ab' + b'\3cd' + b'\5ef'


@pytest.mark.parametrize('headers, told', [
    (b'', 'CHECK(codecPrivateSize >= 3) failed.'),
    (b'\3' + VORBIS[1:], 'CHECK(codecPrivate[0] == 0x02) failed.'),
    (VORBIS[:-1] + b'x', None),
    (VORBIS.replace(b'\5', b'\4'), 'CHECK(codecPrivate[len1 + len2 + 3] == 0x05) failed.'),
], ids=['none', 'lace count', 'good', 'setup header'])
def test_file_that_would_stop_the_process(mkvx, write, headers, told):
    path = write('vorbis.mka', craft.matroska([craft.audio(1, 'A_VORBIS', craft.private(headers))],
                                              craft.cluster(0, craft.simple_block(1, 0, b'frame'))))
    for command in 'info', 'packets':
        run = mkvx(command, path)
        assert run.code == (1 if told else 0)
        if told:
            assert run.out == '' and 'would stop the media process' in sentence(run) and told in run.err
    assert mkvx('sniff', path).code == 0
