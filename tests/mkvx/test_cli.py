"""Exit codes and error sentences: 2 for a wrong command line, 1 for a file that cannot be used, and always exactly one
sentence on stderr that names what is wrong."""
import json
import os
import re
import shlex
import shutil
import signal
import subprocess
import time

import pytest

import craft


def sentence(run):
    assert run.err.startswith('mkvx: ') and run.err.count('\n') == 1, run.err
    return run.err


@pytest.mark.parametrize('args', [
    ['frobnicate', 'x.mkv'], ['info'], ['info', '--format', 'yaml', 'x.mkv'], ['packets', '--limit', '0', 'x.mkv'],
    ['packets', '--track', 'one', 'x.mkv'], ['info', '--log', 'loud', 'x.mkv'], ['info', '--no-such-option', 'x.mkv'],
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


@pytest.mark.parametrize('word, meant', [('chek', 'check'), ('Packets', 'packets'), ('extracts', 'extract'),
                                         ('xyzzy', None)])
def test_misspelt_command(mkvx, word, meant):
    run = mkvx(word, 'x.mkv')
    assert run.code == 2 and (f'did you mean {meant}?' if meant else f'no command {word} (') in sentence(run)


def test_every_help_ends_with_an_example_that_is_understood(mkvx, binary, sample, tmp_path):
    shutil.copy(sample, tmp_path / 'film.mkv')
    commands = re.findall(r'^  (\w+) ', mkvx('--help').out.split('Subcommands:')[1].split('Exit codes:')[0], re.M)
    assert len(commands) >= 16
    for command in [None, *commands]:
        text = mkvx(*filter(None, [command]), '--help').out.split('Example:')[-1]
        examples = [line.strip() for line in text.splitlines() if line.strip()]
        assert examples and all(e.startswith('mkvx ' + (command or '')) for e in examples), command
        for example in examples:
            args = [a for a in shlex.split(example, comments=True)[1:] if '*' not in a or a == '*.mkv']
            args = ['film.mkv' if a == '*.mkv' else a for a in args]
            run = subprocess.run([binary, *args], cwd=tmp_path, capture_output=True, text=True)
            assert run.returncode in ((0, 1) if '/media' in example else (0,)), (example, run.stderr)


PROGRESS = ['--progress', 'json']


@pytest.mark.parametrize('args, late, shape', [
    (['packets', '--format', 'csv', *PROGRESS], 2000, 'lines'),
    (['packets', '--format', 'jsonl', *PROGRESS], 2000, 'jsonl'),
    (['packets', '--format', 'json', *PROGRESS], 2000, 'json'),
    (['tree', '--all', *PROGRESS], 100000, 'lines'),
    (['tree', '--all', '--format', 'json', *PROGRESS], 100000, 'json'),
    (['explain', '--format', 'json', 'SimpleBlock'], 100000, 'json'),
    (['decode', '--format', 'json', *PROGRESS], 2000, 'json'),
    (['cost', '--demux', '--seeks', '0', '--format', 'json', *PROGRESS], 1000, 'json'),
    (['extract', '--track', '0', '-o', 'OUT', *PROGRESS], 2000, 'lines'),
    (['seek', '--track', '0', *['--to', '4000000'] * 500, '--format', 'jsonl'], 500, 'jsonl'),
    (['late', '--track', '0', '--at', '200', '--by', '500000'], 2000, 'nothing'),
    (['info'], 2000, 'nothing'), (['index'], 2000, 'nothing'), (['report', '-o', 'OUT'], 2000, 'nothing'),
], ids=lambda value: value[0] + value[2] if isinstance(value, list) and len(value) > 2 else None)
def test_interruption(binary, sample, tmp_path, args, late, shape):
    """On a source that takes seconds to be read, once there is progress or after a while."""
    saved = tmp_path / 'out'
    run = subprocess.Popen([binary, *(str(saved) if a == 'OUT' else a for a in args), sample, '--late', str(late)],
                           stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    if '--progress' in args:
        run.stderr.readline()
    else:
        time.sleep(4 if args[0] == 'seek' else 1)
    run.send_signal(signal.SIGINT)
    out, err = run.communicate(timeout=20)
    told = [line for line in err.splitlines() if not line.startswith('{')]
    assert run.returncode == 130 and len(told) == 1 and re.match('mkvx: .*interrupted after ', told[0]), err
    assert (out == '') == (shape == 'nothing') and (out == '' or out.endswith('\n'))
    whole = {'json': [out], 'jsonl': out.splitlines()}.get(shape, [])
    assert all(isinstance(json.loads(text), dict) for text in whole)
    if args[0] == 'extract':
        assert 0 < saved.stat().st_size < sample.stat().st_size
    else:
        assert not saved.exists()


def test_interruption_while_standard_input_is_awaited(binary):
    silent, other_end = os.pipe()
    run = subprocess.Popen([binary, 'info', '-'], stdin=silent, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                           text=True)
    time.sleep(0.5)
    run.send_signal(signal.SIGINT)
    out, err = run.communicate(timeout=10)
    os.close(silent), os.close(other_end)
    assert run.returncode == 130 and out == '' and err == 'mkvx: standard input: interrupted after 0 bytes\n'


@pytest.mark.parametrize('args, late', [
    (['packets'], 2000), (['tree', '--all'], 100000), (['decode'], 2000), (['cost', '--demux', '--seeks', '0'], 1000),
], ids=str)
def test_progress(binary, sample, args, late):
    run = subprocess.Popen([binary, *args, *PROGRESS, '--late', str(late), sample], stdout=subprocess.DEVNULL,
                           stderr=subprocess.PIPE, text=True)
    lines = [json.loads(run.stderr.readline())['progress'] for _ in range(2)]
    run.kill()
    run.communicate()
    assert lines[1]['bytes'] > lines[0]['bytes'] and lines[1]['seconds'] > lines[0]['seconds'] >= 1
    assert lines[1]['seconds_left'] > 0


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


def test_track_that_is_not_there(mkvx, sample):
    run = mkvx('packets', '--track', '3', sample)
    assert run.code == 2 and run.out == ''
    assert str(sample) in sentence(run)


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
