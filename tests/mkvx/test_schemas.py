"""The schemas of docs/schemas against what the commands print: on the sample, and on a file that is damaged and odd."""
import copy
import json
from pathlib import Path

import jsonschema
import pytest

import craft
from conftest import BINARY

FOLDER = Path(__file__).parents[2] / 'docs/schemas'
SCHEMAS = {path.name.split('.')[0]: json.loads(path.read_text()) for path in FOLDER.iterdir()}

# Of each command: the option values of --format, and what is asked; F is the file, O a path to write to.
RUNS = [
    ('sniff', ['json'], 'F'), ('info', ['json'], 'F'), ('check', ['json', 'jsonl'], 'F'),
    ('packets', ['json', 'jsonl'], '--all F'), ('packets', ['json'], '--limit 1 F'),
    ('seek', ['json', 'jsonl'], '--to 0 --to 500000 --to -1us F'), ('late', ['json', 'jsonl'], '--track 0 --at 1 --by 500000 F'),
    ('index', ['json'], '--coarse 100000 F'), ('decode', ['json'], 'F'), ('extract', ['json'], '--track 0 -o O F'),
    ('summary', ['json'], 'RESULTS'), ('diff', ['json'], 'RESULTS OTHERS'),
    ('compare', ['json'], '--plugin PLUGIN F'),
    ('mend', ['json'], '--dry-run F -o O'),
    ('cost', ['json'], '--seeks 2 --demux F'), ('cost', ['json'], '--no-size F'),
    ('bench', ['json'], 'demux --once --reads F'), ('bench', ['json'], 'open --once F'),
    ('tree', ['json', 'jsonl'], 'F'), ('tree', ['json', 'jsonl'], '--at 600 F'), ('tree', ['json'], '--no-size F'),
    ('explain', ['json'], ''), ('explain', ['json'], 'block'), ('explain', ['json'], '0x4DBE'), ('explain', ['json'], 'CodecID F'),
    ('explain', ['json'], '0xA1 F'), ('explain', ['json'], 'GAP F'), ('explain', ['json'], '5 F'),
    ('chapters', ['json'], 'F'), ('attachments', ['json'], '--extract O F'),
]


def odd_film():
    """Of much that the schemas allow: unknown IDs and codecs, text that is no UTF-8, laced and unreadable blocks, nested
    chapters, an attachment without data, an element of unknown size, and damage; a decoder that fails."""
    shown = craft.element(0x80, craft.text(0x85, b'A\xffct') + craft.text(0x437C, 'eng') + craft.text(0x437E, 'gb'))
    inner = craft.element(0xB6, craft.uint(0x91, 0) + craft.uint(0x92, 10 ** 8) + craft.uint(0x98, 1))
    chapters = craft.element(0x1043A770, craft.element(0x45B9, craft.element(0xB6, craft.uint(0x91, 0) + shown + inner)))
    attached = craft.element(0x1941A469, b''.join(
        craft.element(0x61A7, craft.text(0x466E, name) + craft.text(0x4660, 'text/plain') + craft.uint(0x46AE, 2 ** 63) + more)
        for name, more in (('../a', craft.text(0x467E, 'what') + craft.element(0x465C, b'data')), (b'b\x1b\xff', b''))))
    tracks = [craft.video(1, 'V_MPEGH/ISO/HEVC', craft.private(b'\1' + bytes(20) + b'\3' + bytes(9)), craft.name(b'\xff\x1b[2J!')),
              craft.audio(2, 'A_UNHEARD'), craft.subtitle(3), craft.audio(4, 'A_MPEG/L3', craft.stripped(b'>'))]
    blocks = [craft.simple_block(1, 0, b'\0\0\0\3abc'), craft.simple_block(4, 0, b'\2\1\1abc', lacing=1),
              craft.bad_laces(4, 1), craft.block_group(2, 5, b'event', 90),
              craft.simple_block(1, 40, b'\0\0\0\2de', key=False), craft.element(0x4DBE, b'unknown')]
    data = craft.matroska(tracks, chapters, attached, craft.cluster(0, *blocks), b'\0' * 40, craft.cluster(9, *blocks), cue_for=1)
    return data[:-3]


@pytest.fixture(scope='module')
def files(tmp_path_factory):
    path = tmp_path_factory.mktemp('schemas') / 'odd\x1b.mkv'
    path.write_bytes(odd_film())
    gap = path.read_bytes().index(b'\0' * 40) + 20
    return {'sample': (Path(__file__).parents[2] / 'samples/sample.mkv', '700'), 'odd': (path, str(gap))}


def shortened(node):
    """Lists to their first and last items, and no names that the file makes up."""
    if isinstance(node, dict):
        return {name: shortened(value) for name, value in node.items() if name not in ('config', 'left_out')}
    return [shortened(value) for value in node[:3] + node[3:][-3:]] if isinstance(node, list) else node


def objects(node):
    if isinstance(node, dict):
        yield node
    for value in node.values() if isinstance(node, dict) else node if isinstance(node, list) else ():
        yield from objects(value)


def accepts_a_renamed_member(validator, result):
    """The first member that the schema takes under another name."""
    for place, found in enumerate(objects(result)):
        for name in found:
            changed = copy.deepcopy(result)
            there = list(objects(changed))[place]
            there['renamed_' + name] = there.pop(name)
            if validator.is_valid(changed):
                return place, name
    return None


@pytest.mark.parametrize('command, formats, arguments', RUNS, ids=lambda value: value if isinstance(value, str) else '-'.join(value))
def test_output(mkvx, files, tmp_path, command, formats, arguments):
    validator = jsonschema.Draft202012Validator(SCHEMAS[command])
    validator.check_schema(validator.schema)
    for file, gap in files.values():
        replaced = {'F': file, 'GAP': gap, 'PLUGIN': BINARY.parent.parent / 'lib/libmatroska_ext.so', 'RESULTS': tmp_path / 'results', 'OTHERS': tmp_path / 'others'}
        if 'RESULTS' in arguments:
            judged = mkvx('check', '--format', 'jsonl', file).out
            replaced['RESULTS'].write_text(judged)
            replaced['OTHERS'].write_text(judged.replace('"code":"', '"code":"other_'))
        for form in formats:
            replaced['O'] = tmp_path / form
            run = mkvx(command, '--format', form, *(replaced.get(word, word) for word in arguments.split()))
            results = run.lines() if form == 'jsonl' or command == 'sniff' else [run.json()]
            assert results, run.err
            for result in results:
                validator.validate(result)
            is_part = form == 'jsonl' and command in ('packets', 'tree')
            assert all((next(iter(result.items())) == ('mkvx', 1)) != is_part for result in results)
            assert accepts_a_renamed_member(validator, shortened(results[0])) is None


def test_a_schema_for_each_command_and_a_run_for_each_schema(mkvx):
    listed = mkvx('--help').out.partition('ubcommands:\n')[2].partition('\n\n')[0].split('\n')
    commands = {line.split()[0] for line in listed if line.startswith('  ') and line[2:3].isalpha()}
    assert commands - {'report', 'help'} == set(SCHEMAS) - {'profiles'} == {run[0] for run in RUNS}


def test_same_names_mean_the_same():
    """Each file stands alone, so that what two of them describe is written twice."""
    known = {}
    for schema in SCHEMAS.values():
        for name in {'count', 'sha1', 'id', 'block', 'element', 'landed'} & set(schema.get('$defs', {})):
            assert known.setdefault(name, schema['$defs'][name]) == schema['$defs'][name]
