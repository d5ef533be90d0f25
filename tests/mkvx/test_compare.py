"""mkvx compare: two builds of the plug-in, of which the other one is this one with some of its texts changed."""
import json
import platform
from pathlib import Path

import jsonschema
import pytest

import craft
from test_check import CASES

SCHEMA = json.loads((Path(__file__).parents[2] / 'docs/schemas/compare.schema.json').read_text())
PATCHES = {     # what is changed: (old bytes, new ones, the file, the part that differs)
    'nothing': (b'', b'', 'good', []),
    'a mime type': (b'audio/mpeg', b'audio/mpog', 'good', ['tracks']),
    'what is claimed': (b'video/x-matroska_ext', b'video/x-matroska_new', 'good', ['opening']),
    'an assertion': (b'CHECK(codecPrivateSize >= 3)', b'CHECK(codecPrivateSize >= 4)', 'vorbis-none', ['end']),
    'nothing of what stops': (b'', b'', 'vorbis-none', []),
}


@pytest.fixture
def other(binary, write):
    original = (binary.parent.parent / 'lib/libmatroska_ext.so').read_bytes()

    def patched(old, new):
        assert old in original and len(old) == len(new)
        return write('other.so', original.replace(old, new))
    return patched


@pytest.mark.parametrize('old, new, film, parts', PATCHES.values(), ids=PATCHES)
def test_first_differences(mkvx, write, other, old, new, film, parts):
    run = mkvx('compare', '--json', '--plugin', other(old, new), write('film.mkv', CASES[film][0]))
    compared = run.json()
    jsonschema.Draft202012Validator(SCHEMA).validate(compared)
    assert [d['part'] for d in compared['differences']] == parts and run.code == (1 if parts else 0)
    assert compared['same'] == (not parts) and all(d['base'].replace(old.decode(), new.decode()) == d['other']
                                                   for d in compared['differences'])


# What is changed in the code, where x86 has such constants as they are: (old bytes, new ones, the parts that differ with the start
# of what each build says, how many reads were the same). The keys of metadata are words backwards, the ID of Cues its bytes.
CODE = {
    'times': (b'emit', b'emiu', {'units': ('unit 1: 1000000 us, key', 'unit 1: 0 us, key'),
                                 'seeks': ('seek to 1138933 us: 1000000 us', 'seek to 1138933 us: 0 us')}, 1),
    'key flags': (b'cnys', b'cnyt', {'units': ('unit 0: 0 us, key, 3 bytes', 'unit 0: 0 us, 3 bytes'),
                                     'seeks': ('seek to 322166 us: 0 us, key', 'seek to 322166 us: 0 us, 3 bytes')}, 0),
    'where seeks land': (b'\x6b\xbb\x53\x1c', b'\x6c\xbb\x53\x1c',
                         {'seeks': ('seek to 1138933 us: 0 us, key', 'seek to 1138933 us: 1000000 us, key')}, 4),
}


@pytest.mark.skipif(platform.machine() != 'x86_64', reason='constants are told apart in the code of x86 only')
@pytest.mark.parametrize('change', CODE)
def test_units_and_seeks_that_differ(mkvx, write, other, change):
    """Three Clusters, of which Cues name the first one where only seeks are to differ: without Cues an index names all."""
    old, new, parts, reads = CODE[change]
    media = [craft.cluster(1000 * i, craft.simple_block(1, 0, b'one')) for i in range(3)]
    film = write('film.mkv', craft.matroska([craft.audio(1, 'A_MPEG/L3')], *media, duration_ms=2000.0, cue_for=1 if len(parts) == 1 else None))
    run = mkvx('compare', '--json', '--plugin', other(old, new), film)
    compared = run.json()
    assert run.code == 1 and [d['part'] for d in compared['differences']] == list(parts) and compared['tracks'] == 1
    assert compared['reads'] == reads
    for difference, (base, patched) in zip(compared['differences'], parts.values()):
        assert difference['base'].startswith('index 0, ' + base) and difference['other'].startswith('index 0, ' + patched)


def test_several_files(mkvx, write, other):
    """A line each, and the code of all."""
    plugin = other(b'video/avc', b'video/abc')
    films = [write('%s.mkv' % name, CASES[name][0]) for name in ('vorbis-none', 'good', 'opus', 'empty')]
    run = mkvx('compare', '--json', '--plugin', plugin, *films)
    assert run.code == 1 and [(line['file'], line['same']) for line in run.lines()] == list(
        zip(map(str, films), [True, False, False, True]))
    assert mkvx('compare', '--plugin', plugin, films[0], films[3]).code == 0
    broken = mkvx('compare', '--json', '--plugin', plugin, films[1], '/no/such', films[0])
    assert broken.code == 2 and '/no/such' in broken.err


def test_all_is_read_and_sought(mkvx, sample, other):
    """Units of three tracks, an end of two; 16 seeks and four to the ends of two."""
    compared = mkvx('compare', '--json', '--plugin', other(b'', b''), sample).json()
    assert [compared[n] for n in ('tracks', 'reads', 'seeks')] == [3, 200 + 346 + 3 + 2, 40]
    faulty = mkvx('compare', '--json', '--seeks', '0', '--fail-at', '60+', '--plugin', other(b'', b''), sample).json()
    assert faulty['same'] and faulty['reads'] < compared['reads']


def test_what_cannot_be_compared(mkvx, sample, other):
    fine = other(b'', b'')
    for arguments in ([sample], ['--plugin', sample, sample], ['--plugin', fine, '/no/such'], ['--plugin', fine, '--base', sample, sample],
                      ['--plugin', fine, '--late', '2000', '--time-limit', '0.1', sample]):
        run = mkvx('compare', *arguments)
        assert run.code == 2 and run.err.count('\n') == 1 and run.out == '', arguments
