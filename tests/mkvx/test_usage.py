"""Exit codes and error sentences: 2 for a wrong command line, 1 for a file that cannot be used, and always exactly one
sentence on stderr that names what is wrong."""
import os

import pytest

import craft


def sentence(run):
    assert run.err.startswith('mkvx: ') and run.err.count('\n') == 1, run.err
    return run.err


@pytest.mark.parametrize('args', [
    [], ['frobnicate', 'x.mkv'], ['info'], ['info', '--format', 'yaml', 'x.mkv'], ['packets', '--limit', '0', 'x.mkv'],
    ['packets', '--track', 'one', 'x.mkv'], ['info', '--log', 'loud', 'x.mkv'], ['info', '--no-such-option', 'x.mkv'],
    ['bench', 'mux', 'x.mkv'], ['bench', 'open', '--source', 'tape', 'x.mkv'],
], ids=lambda args: ' '.join(args) or 'nothing')
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


def test_full_disk_is_told(sample):
    import subprocess
    from conftest import BINARY
    with open('/dev/full', 'w') as full:
        run = subprocess.run([BINARY, 'info', sample], stdout=full, stderr=subprocess.PIPE, text=True)
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
