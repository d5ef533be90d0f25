"""mkvx compare: two builds of the plug-in, of which the other one is this one with some of its texts changed."""
import json
from pathlib import Path

import jsonschema
import pytest

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
