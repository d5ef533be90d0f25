"""The installed tree: mkvx finds its plug-in, other projects build with CMake and pkg-config, bash completes."""
import os
import shlex
import subprocess
from pathlib import Path

import pytest

ROOT = Path(__file__).parents[2]
BUILD = Path(os.environ.get('MKVX_BUILD', ROOT / 'build/release'))
SAMPLE = ROOT / 'samples/sample.mkv'


def run(*args, **options):
    done = subprocess.run([str(a) for a in args], capture_output=True, text=True, timeout=120, **options)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


@pytest.fixture(scope='module')
def tree(tmp_path_factory):
    prefix = tmp_path_factory.mktemp('installed')
    run('cmake', '--install', BUILD, '--prefix', prefix, env={**os.environ, 'DESTDIR': ''})
    return prefix


def only(tree, pattern):
    found = list(tree.rglob(pattern))
    assert len(found) == 1, found
    return found[0]


def test_mkvx_runs_and_finds_its_plugin(tree):
    assert 'video/avc' in run(tree / 'bin/mkvx', 'info', SAMPLE, cwd='/')
    page = only(tree, 'mkvx.1.gz')
    assert 'attachments' in run('gzip', '-dc', page)


def libraries(path):
    return [line.split()[0] for line in run('ldd', path).splitlines()]


def test_the_decoders_are_a_program_of_their_own(tree):
    """No program may hold the AAC decoder library and a GPL build of libavcodec; only one pays for libavcodec's libraries."""
    assert 'h264' in run(tree / 'bin/mkvx', 'decode', '--frames', '1', SAMPLE, cwd='/')
    mkvx, decoders = libraries(tree / 'bin/mkvx'), libraries(only(tree, 'mkvx-decode'))
    assert len(mkvx) <= 45 and not any(name.startswith(('libav', 'libcurl')) for name in mkvx)
    assert any(name.startswith('libavcodec') for name in decoders)
    assert not any(name.startswith(('libfdk', 'libmatroska_ext')) for name in decoders)
    assert {name.split('.')[0] for name in libraries(only(tree, 'mkvx-decode-aac'))} >= {'libfdk-aac'}
    assert not any(name.startswith('libav') for name in libraries(only(tree, 'mkvx-decode-aac')))


def test_consumer_with_cmake(tree, tmp_path):
    run('cmake', '-S', ROOT / 'tests/package/consumer', '-B', tmp_path, f'-DCMAKE_PREFIX_PATH={tree}')
    run('cmake', '--build', tmp_path)
    assert run(tmp_path / 'consumer', SAMPLE) == '3 entries, 3 offered\n'


def test_consumer_with_pkg_config(tree, tmp_path):
    env = {**os.environ, 'PKG_CONFIG_PATH': str(only(tree, 'matroska_ext.pc').parent)}
    flags = shlex.split(run('pkg-config', '--cflags', '--libs', 'matroska_ext', env=env))
    plugin = run('pkg-config', '--variable=plugin', 'matroska_ext', env=env).strip()
    program = tmp_path / 'consumer'
    run(os.environ.get('CXX', 'c++'), '-std=c++17', f'-DPLUGIN="{plugin}"', ROOT / 'tests/package/consumer/main.cpp',
        '-o', program, *flags)
    assert run(program, SAMPLE) == '3 entries, 3 offered\n'


@pytest.mark.parametrize('words, offered', [
    (['se'], ['seek']),
    (['tree', '--'], ['--help', '--depth', '--all', '--at', '--format', '--plugin', '--log']),
    (['tree', '--format', 'json'], ['json', 'jsonl']),
    (['--log', 'w'], ['warn']),
    (['bench', 'd'], ['demux']),
    (['info', 'sam'], []),                       # left to the completion of file names
    (['attachments', '--extract', 'info'], []),
], ids=lambda value: ' '.join(value) or 'nothing')
def test_bash_completion(tree, words, offered):
    script = only(tree, 'bash-completion').rglob('mkvx')
    line = ' '.join(shlex.quote(word) for word in ['mkvx', *words])
    out = run('bash', '-c', f'source {next(script)}; COMP_WORDS=({line}); COMP_CWORD={len(words)}; _mkvx; '
              'printf "%s\\n" "${COMPREPLY[@]}"').split()
    assert set(offered) <= set(out) and (offered or not out), out
