"""mkvx chapters and attachments: what the model holds, and files whose names would like to be elsewhere."""
import os

import pytest

import craft


def attached(name, data, *more):
    name = craft.text(0x466E, name) if name is not None else b''
    return craft.element(0x61A7, name + craft.text(0x4660, 'text/plain') + craft.element(0x465C, data) + b''.join(more))


def file_with(*level_one):
    """A Segment whose SeekHead leads to each of these elements."""
    info = craft.element(0x1549A966, craft.uint(0x2AD7B1, 1000000))
    tracks = craft.element(0x1654AE6B, craft.audio(1, 'A_AC3'))

    def seek_head(at):
        entries = b''
        for element in level_one:
            entries += craft.element(0x4DBB, craft.element(0x53AB, element[:4]) + craft.element(0x53AC, at.to_bytes(8, 'big')))
            at += len(element)
        return craft.element(0x114D9B74, entries)

    size = len(seek_head(0)) + len(info) + len(tracks)
    head = craft.element(0x1A45DFA3, craft.text(0x4282, 'matroska') + craft.uint(0x4285, 2))
    return head + craft.element(0x18538067, seek_head(size) + info + tracks + b''.join(level_one))


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
