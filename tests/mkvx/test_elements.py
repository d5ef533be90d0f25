"""mkvx tree, explain, chapters and attachments: against an independent reader, against bytes written here, on hostile ones,
and with names that would like to be elsewhere."""
import os
import re
import subprocess

import pytest

import craft


def small(*blocks, more=b''):
    return craft.matroska([craft.audio(1, 'A_AC3')], craft.cluster(1000, *blocks), more)


def items(run):
    assert run.code == 0, run.err
    return run.json()['items']


def find(run, name):
    return [item for item in items(run) if item.get('name') == name]


def test_places_are_those_of_an_independent_reader(mkvx, sample):
    theirs = subprocess.run(['mkvinfo', '-a', '-P', '-z', sample], capture_output=True, text=True).stdout
    places = re.findall(r' at (\d+) size (\d+) data size (\d+)$', theirs, re.M)
    ours = {(item['offset'], item['end'] - item['offset'], item['size'])
            for item in items(mkvx('tree', '--all', '--format', 'json', sample))}
    assert len(places) > 600 and {tuple(map(int, place)) for place in places} == ours


@pytest.mark.parametrize('name, bytes_, value', [
    ('TimestampScale', craft.element(0x2AD7B1, b'\0' * 3 + b'\x0f\x42\x40'), 1000000),
    ('SamplingFrequency', craft.element(0xB5, b'\x47\x2c\x44\0'), 44100.0),
    ('DateUTC', craft.element(0x4461, (86400 * 10 ** 9 + 5 * 10 ** 8).to_bytes(8, 'big')), '2001-01-02T00:00:00.5Z'),
    ('DateUTC', craft.element(0x4461, (-1).to_bytes(8, 'big', signed=True)), '2000-12-31T23:59:59.999999999Z'),
    ('ReferenceBlock', craft.element(0xFB, b'\xff\x38'), -200),
    ('SeekID', craft.element(0x53AB, b'\x1c\x53\xbb\x6b'), '0x1C53BB6B'),
    ('Title', craft.text(0x7BA9, b'a\x1b[31m\0hidden'), 'a\x1b[31m'),
    ('CRC-32', craft.element(0xBF, b'\1\2\3\4'), '01020304'),
    ('SegmentUUID', craft.element(0x73A4, bytes(range(40))), bytes(range(16)).hex()),
    ('Void', craft.element(0xEC, b'\0' * 9), None),
], ids=lambda value: value if isinstance(value, str) else '')
def test_values(mkvx, write, name, bytes_, value):
    path = write('v.mkv', craft.matroska([], bytes_))
    assert find(mkvx('tree', '--format', 'json', path), name)[-1].get('value') == value
    assert '\x1b' not in mkvx('tree', path).out


def test_laced_block(mkvx, write):
    lacing = b'\x02\x03\xff\x00'  # three frames: 3, 255, the rest
    path = write('l.mkv', small(craft.simple_block(1, -5, lacing + b'x' * 260, lacing=1)))
    block = find(mkvx('tree', '--format', 'json', path), 'SimpleBlock')[0]['block']
    assert block == {'track': 1, 'timecode': -5, 'time_us': 995000, 'flags': 0x82, 'key': True, 'lacing': 'xiph',
                     'frames': [3, 255, 2]}
    assert 'track number 1, -5 (00:00:00.995), key, Xiph lacing, 3 frames: 3 255 2 B' in mkvx('tree', path).out


def damaged():
    good = small(craft.simple_block(1, 0, b'frame'))
    cluster = good.index(b'\x1f\x43\xb6\x75')
    block = good.index(b'\xa3\x01', cluster)
    yield 'unknown', craft.matroska([], craft.element(0x4321, b'abc')), 'unknown ID 0x4321: 61 62 63'
    yield 'cut', good[:-3], '! reaches 3 bytes past the end of the file'
    yield 'overlong', good[:block + 8] + bytes([good[block + 8] + 9]) + good[block + 9:], 'reaches 9 bytes past the end of'
    yield 'misplaced', craft.matroska([], craft.uint(0xD7, 1)), 'TrackNumber: 1  ! does not belong in this parent'
    yield 'wide', craft.matroska([], craft.element(0x2AD7B1, b'\1' * 9)), '! longer than 8 bytes'
    yield 'float', craft.matroska([], craft.element(0xB5, b'\1' * 5)), '! no value can be read: float of 5 bytes'
    yield 'lacing', small(craft.simple_block(1, 0, b'\xff\x01', lacing=3)), '! its lacing does not fit it'
    yield 'skipped', craft.matroska([], b'\x1f\x43\xb6\x75' + b'\0' * 2000), '! no element can be read here: skipped'
    yield 'end', small(more=b'\0' * 9), '! no element can be read here, and the reader looks no further'
    yield 'no size', craft.matroska([]).replace(b'\x16\x54\xae\x6b\x01' + b'\0' * 7, b'\x16\x54\xae\x6b\x01' + b'\xff' * 7), \
        '! has no size'


@pytest.mark.parametrize('data, text', [pytest.param(d, t, id=i) for i, d, t in damaged()])
def test_damage_is_marked(mkvx, write, data, text):
    path = write('d.mkv', data)
    run = mkvx('tree', path)
    assert run.code == 0 and text in run.out, run.out


def test_long_rows_are_cut_and_counted(mkvx, write):
    blocks = [craft.simple_block(1, i, b'x') for i in range(100)]
    blocks[50] = craft.element(0xEC, b'')
    path = write('m.mkv', small(*blocks))
    short = items(mkvx('tree', '--format', 'json', path))
    assert [item['left_out'] for item in short if 'left_out' in item] == [{'SimpleBlock': 47}, {'SimpleBlock': 49}]
    assert len(find(mkvx('tree', '--all', '--format', 'json', path), 'SimpleBlock')) == 99
    depths = [item['depth'] for item in items(mkvx('tree', '--depth', '2', '--format', 'json', path))]
    assert max(depths) == 1


def test_every_byte_is_in_the_listing(mkvx, sample):
    end = 0
    for item in mkvx('tree', '--depth', '1', '--format', 'jsonl', sample).lines():
        assert item['offset'] == end
        end = item['end']
    assert end == sample.stat().st_size


def test_way_to_a_byte(mkvx, write):
    data = small(craft.simple_block(1, 0, b'needle'))
    path = write('a.mkv', data)
    way = items(mkvx('tree', '--at', data.index(b'needle'), '--format', 'json', path))
    assert [item['name'] for item in way] == ['Segment', 'Cluster', 'SimpleBlock']
    assert way[2]['asked'] and way[2]['block']['time_us'] == 1000000
    held = items(mkvx('tree', '--at', data.index(b'\x1f\x43\xb6\x75') + 1, '--format', 'json', path))
    assert [item['name'] for item in held] == ['Segment', 'Cluster', 'Timestamp', 'SimpleBlock']
    assert mkvx('tree', '--at', len(data), path).code == 2
    text = mkvx('explain', data.index(b'needle'), path).out
    assert text.startswith(f'Byte {data.index(b"needle")} is byte 4 of the data of Segment > Cluster > SimpleBlock\n')


@pytest.mark.parametrize('make', [
    lambda: b'\xec\x80' * 500000,
    lambda: b'\x18\x53\x80\x67\xff' * 200000,           # Segments of unknown size in one another
    lambda: b'\x1f\x43\xb6\x75\xff' * 200000,
    lambda: (b'\x45\xb9\x01' + b'\xff' * 7) * 100000,    # masters without a size
    lambda: b''.join(craft.element(0x4000 + i % 0x3fff, b'') for i in range(100000)),
    lambda: b'\0\x1f\x43\xb6\x75' * 100000,
], ids=['a million bytes of children', 'nested', 'open clusters', 'sizeless', 'unknown', 'resynchronising'])
def test_hostile_structures_end_with_little_output(mkvx, write, make):
    path = write('h.mkv', craft.matroska([], make()))
    run = mkvx('tree', path)
    assert run.code == 0 and len(run.out) < 400000
    for item in mkvx('tree', '--at', path.stat().st_size // 2, '--format', 'jsonl', path).lines():
        assert item['offset'] >= 0


def test_every_element_of_the_table_is_explained(mkvx):
    rows = mkvx('explain', '--format', 'json').json()['elements']
    names = [row['name'] for row in rows]
    assert len(names) > 250 and len(set(names)) == len(names) and len({row['id'] for row in rows}) == len(names)
    for row in rows:
        assert len(row['meaning']) > 5 and row['path'][-1] == row['name'] and row['use'] in ('used', 'kept', 'ignored'), row
    for row in rows[::40]:
        for subject in (row['name'].upper(), row['id'], row['id'][2:].lower()):
            assert mkvx('explain', subject, '--format', 'json').json() == {'mkvx': 1, **row}


@pytest.mark.parametrize('subject, text', [
    ('codecprivate', 'CodecPrivate (0x63A2), binary, RFC 9559, 5.1.4.1.22'), ('1A45DFA3', 'EBML (0x1A45DFA3), master'),
    ('TimecodeScale', 'TimestampScale (0x2AD7B1)'), ('timestampscale', 'TimestampScale (0x2AD7B1)'), ('0x4321', 'no element that is known'),
])
def test_explain(mkvx, subject, text):
    run = mkvx('explain', subject)
    assert run.code == 0 and text in run.out


@pytest.mark.parametrize('subject, suggestion', [('CodecPrivat', 'CodecPrivate'), ('SimpelBlock', 'SimpleBlock'), ('\x1b[1m', '')])
def test_explain_suggests(mkvx, subject, suggestion):
    run = mkvx('explain', subject)
    assert run.code == 2 and suggestion in run.err and '\x1b' not in run.err


def test_explain_finds_the_element_in_a_file(mkvx, sample):
    found = mkvx('explain', 'CodecPrivate', sample, '--format', 'json').json()
    assert found['count'] == 2 and [element['size'] for element in found['first']] == [47, 5]


# --- chapters and attachments -------------------------------------------------

def attached(name, data, *more):
    name = craft.text(0x466E, name) if name is not None else b''
    return craft.element(0x61A7, name + craft.text(0x4660, 'text/plain') + craft.element(0x465C, data) + b''.join(more))


def file_with(*level_one):
    return craft.matroska([craft.audio(1, 'A_AC3')], led_to=level_one)


def attachments(*files):
    return file_with(craft.element(0x1941A469, b''.join(files)))


HOSTILE = [
    ('../../etc/passwd', '_._.._etc_passwd'), ('/abs', '_abs'), ('..', 'attachment'), ('', 'attachment'), (None, 'attachment'),
    ('.bashrc', '_bashrc'), ('-rf', '_rf'), ('a\x1b[31mb\n', 'a_[31mb_'), (b'\xff\xfe', '__'), ('con.txt', '_con.txt'),
    ('C:\\x', 'C__x'), ('x' * 300 + '.ttf', 'x' * 196 + '.ttf'), ('é' * 150, 'é' * 100), ('dots...', 'dots'),
    ('ok name (1).ttf', 'ok name (1).ttf'),
]


@pytest.mark.parametrize('name, saved', HOSTILE, ids=lambda value: repr(value)[:20])
def test_names_stay_in_the_folder(mkvx, write, tmp_path, name, saved):
    path = write('a.mkv', attachments(attached(name, b'content')))
    out = tmp_path / 'out'
    run = mkvx('attachments', '--extract', out, path)
    assert run.code == 0, run.err
    if name == '../../etc/passwd':
        saved = os.listdir(out)[0]
        assert '/' not in saved and saved[0] == '_'
    assert os.listdir(out) == [saved] and (out / saved).read_bytes() == b'content'
    assert sorted(os.listdir(tmp_path)) == ['a.mkv', 'out'] and '\x1b' not in run.out
    assert ('in the file "' in run.out) == (name != saved)


def test_nothing_is_overwritten_or_followed(mkvx, write, tmp_path):
    path = write('a.mkv', attachments(attached('x.txt', b'one'), attached('x.txt', b'two'), attached('link', b'three')))
    out = tmp_path / 'out'
    out.mkdir()
    (out / 'x.txt').write_bytes(b'mine')
    (out / 'link').symlink_to(tmp_path / 'elsewhere')
    names = [a['saved_as'] for a in mkvx('attachments', '--extract', out, path, '--format', 'json').json()['attachments']]
    assert names == ['x-2.txt', 'x-3.txt', 'link-2']
    assert (out / 'x.txt').read_bytes() == b'mine' and not (tmp_path / 'elsewhere').exists()
    assert [(out / name).read_bytes() for name in names] == [b'one', b'two', b'three']


def test_list_and_what_cannot_be_extracted(mkvx, write, tmp_path):
    whole = attached('a.txt', b'abc', craft.text(0x467E, 'Beschreibung'), craft.uint(0x46AE, 7))
    missing = craft.element(0x61A7, craft.text(0x466E, 'none.txt'))
    data = attachments(whole, missing, attached('cut.bin', b'z' * 5000))[:-100]
    path = write('a.mkv', data)
    report = mkvx('attachments', path, '--format', 'json').json()
    assert report['mkvx'] == 1 and report['reached']
    first = report['attachments'][0]
    assert first == {'name': 'a.txt', 'mime': 'text/plain', 'description': 'Beschreibung', 'uid': 7,
                     'offset': data.index(b'abc'), 'size': 3}
    run = mkvx('attachments', path, '--extract', tmp_path / 'out')
    assert run.code == 1 and 'none.txt: has no data' in run.err and '4900 of its 5000 bytes' in run.err
    assert os.listdir(tmp_path / 'out') == ['a.txt']


def test_overlapping_attachments_do_not_fill_the_disk(mkvx, write, tmp_path):
    """Each declares to be as large as all that follow it together."""
    files = [attached(f'{i}', b'') for i in range(200)]
    blob = bytearray(attachments(*files, attached('end', b'e' * 20000)))
    start = 0
    for _ in files:
        start = blob.index(b'\x46\x5c\x01', start)
        blob[start + 3:start + 10] = (15000).to_bytes(7, 'big')
        start += 10
    mkvx('attachments', write('o.mkv', bytes(blob)), '--extract', tmp_path / 'out')
    assert sum(f.stat().st_size for f in (tmp_path / 'out').iterdir()) <= len(blob)


def chapter(start_ms, *more):
    return craft.element(0xB6, craft.uint(0x91, start_ms * 1000000) + b''.join(more))


def title(text, language):
    return craft.element(0x80, craft.text(0x85, text) + craft.text(0x437C, language))


def test_chapters(mkvx, write):
    inner = chapter(500, craft.uint(0x98, 1), title('Inner\x1b', 'eng'))
    outer = chapter(0, craft.uint(0x92, 3723004 * 1000000), craft.uint(0x4598, 0), title('Outer', 'eng'), title('Außen', 'ger'), inner)
    chapters = craft.element(0x1043A770, craft.element(0x45B9, outer) + craft.element(0x45B9, chapter(7)))
    reached, unreached = write('r.mkv', file_with(chapters)), write('u.mkv', craft.matroska([craft.audio(1, 'A_AC3')], chapters))
    for path in (reached, unreached):
        report = mkvx('chapters', '--format', 'json', path).json()
        assert report.pop('reached') == (path == reached) and report.pop('mkvx') == 1
        assert report['editions'] == [
            {'chapters': [{
                'start_us': 0, 'end_us': 3723004000, 'hidden': False, 'enabled': False,
                'titles': [{'text': 'Outer', 'language': 'eng'}, {'text': 'Außen', 'language': 'ger'}],
                'chapters': [{'start_us': 500000, 'hidden': True, 'enabled': True,
                              'titles': [{'text': 'Inner\x1b', 'language': 'eng'}]}]}]},
            {'chapters': [{'start_us': 7000, 'hidden': False, 'enabled': True, 'titles': []}]}]
    assert mkvx('chapters', reached).out.splitlines() == [
        'EDITION         START           END  FLAGS     CHAPTER',
        '      0  00:00:00.000  01:02:03.004  disabled  Outer (eng) / Außen (ger)',
        '      0  00:00:00.500                hidden      Inner\ufffd (eng)',
        '      1  00:00:00.007']
    assert 'nothing leads the plug-in to its chapters' in mkvx('chapters', unreached).err


@pytest.mark.parametrize('command', ['chapters', 'attachments'])
def test_none_and_unusable(mkvx, write, sample, command):
    none = mkvx(command, write('n.mkv', craft.matroska([craft.audio(1, 'A_AC3')])))
    assert none.code == 0 and none.out == '' and 'has no ' + command in none.err
    for data in (b'RIFF', craft.matroska([], doctype='other')):
        run = mkvx(command, write('b.mkv', data))
        assert run.code == 1 and run.out == '' and run.err.count('\n') == 1


def test_every_edge_belongs_to_one_element(mkvx, write):
    """The first and the last byte of each header and of each data; tree and explain agree on whose they are."""
    data = small(craft.simple_block(1, 0, b'needle'), craft.block_group(1, 5, b'more', 7))
    path = write('edges.mkv', data)
    for item in items(mkvx('tree', '--all', '--json', path)):
        begin, inside, end = item['offset'], item['offset'] + item['header'], item['end']
        edges = {begin: 'header', inside - 1: 'header'}
        if item['type'] != 'master':
            edges |= {inside: 'data', end - 1: 'data'}
        for at, part in edges.items():
            told = mkvx('explain', at, path).out.splitlines()
            place = f'Byte {at} is byte {at - (begin if part == "header" else inside)} of the {part} of '
            assert told[0].startswith(place) and told[0].endswith(item['name']), (at, told[0])
            size = '1 byte' if item['size'] == 1 else f'{item["size"]} bytes'
            assert told[1] == f'Stands at {begin}, header {item["header"]} bytes, data {size}, ends at {end}'
            asked = [found for found in items(mkvx('tree', '--at', at, '--json', path)) if found.get('asked')]
            assert [(found['offset'], found['name']) for found in asked] == [(begin, item['name'])], at
    for at in len(data), len(data) + 1, 2 ** 63 - 1, 2 ** 63:
        for args in ['tree', '--at', at], ['explain', at]:
            run = mkvx(*args, path)
            assert (run.code, run.out) == (2, '') and f'no byte {at}, it ends at {len(data)}' in run.err, args


def test_extraction_into_what_is_no_folder(mkvx, write, tmp_path):
    """A folder that a link leads to is the user's choice; a file in its place is not written over."""
    path = write('a.mkv', attachments(attached('a.txt', b'abc'), attached('A.TXT', b'def')))
    taken = write('taken', b'mine')
    run = mkvx('attachments', '--extract', taken, path)
    assert run.code == 1 and str(taken) in run.err and taken.read_bytes() == b'mine'
    deep = mkvx('attachments', '--extract', taken / 'below', path)
    assert deep.code == 1 and 'Not a directory' in deep.err
    (tmp_path / 'real').mkdir()
    (tmp_path / 'link').symlink_to(tmp_path / 'real')
    assert mkvx('attachments', '--extract', tmp_path / 'link', path).code == 0
    assert {file.read_bytes() for file in (tmp_path / 'real').iterdir()} == {b'abc', b'def'}


def test_chapters_in_one_another_without_end(mkvx, write):
    """Deeper than anybody nests them: an answer all the same, and one that can be read."""
    nested = chapter(1)
    for _ in range(2000):
        nested = chapter(1, nested)
    run = mkvx('chapters', '--json', write('deep.mkv', file_with(craft.element(0x1043A770, craft.element(0x45B9, nested)))))
    assert run.code == 0 and run.err.count('\n') <= 1 and run.out.count('start_us') > 10
