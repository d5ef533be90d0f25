"""Runs of mkvx check over many files: what is named, shared out, gone on with, counted for the exit code; and what summary and
diff make of their results."""
import base64
import json
import os
import signal
import subprocess

import pytest

from test_check import CASES
from waiting import until

NAMES = ['good', 'opus', 'vp8', 'merged', 'vorbis-none', 'riff', 'scan', 'laced']


@pytest.fixture
def films(tmp_path):
    """A folder with three copies of each of NAMES, and the working folder for the results beside it."""
    (tmp_path / 'films').mkdir()
    for name in NAMES:
        for i in range(3):
            (tmp_path / 'films' / ('%s%d.mkv' % (name, i))).write_bytes(CASES[name][0])
    return tmp_path


@pytest.fixture
def at(films, binary):
    def run(*arguments, **options):
        return subprocess.run([binary, *arguments], cwd=films, capture_output=True, timeout=120, **options)
    return run


def results(path):
    return [json.loads(line) for line in path.read_bytes().splitlines()]


def test_shares_are_disjoint_complete_and_sum_up(at, films):
    whole = at('check', '--resume', 'one.jsonl', 'films')
    assert whole.returncode == 5 and whole.stdout.endswith(b', 24 of them new\n')
    for part in 1, 2, 3:
        at('check', '--resume', 'part%d.jsonl' % part, '--shard', '%d/3' % part, 'films')
    parts = [{r['file'] for r in results(films / ('part%d.jsonl' % part))} for part in (1, 2, 3)]
    assert all(parts) and sum(map(len, parts)) == 24 and len(set.union(*parts)) == 24
    summaries = [at('summary', '--json', *files).stdout for files in (['one.jsonl'], ['part2.jsonl', 'part3.jsonl', 'part1.jsonl'])]
    assert summaries[0] == summaries[1]
    summary = json.loads(summaries[0])
    assert summary['files'] == 24 and summary['verdicts']['stops_the_media_process'] == 3 and len(summary['worst']) == 24 - 6
    opus = next(f for f in summary['findings'] if f['code'] == 'unknown_codec_id')
    assert opus == {'code': 'unknown_codec_id', 'weight': 'loss', 'files': 3, 'example': 'films/opus0.mkv'}
    assert at('diff', 'one.jsonl', 'part1.jsonl').returncode == 1
    for share in '0/3', '4/3', '1', '1/', 'a/b', '1/2/3':
        assert at('check', '--shard', share, 'films').returncode == 2


def test_a_killed_run_goes_on(at, films, binary, serve, sample):
    """The second file keeps it from ending; what it left then ends within a line."""
    server = serve(sample.read_bytes(), gate=range(100000, 170000))
    with subprocess.Popen([binary, 'check', '--jobs', '1', '--resume', 'out.jsonl', 'films/good0.mkv', server.url('held'), 'films'],
                          cwd=films) as run:
        server.wait_until_held()
        until(lambda: (films / 'out.jsonl').read_bytes().endswith(b'\n'))
        assert b'another run' in at('check', '--resume', 'out.jsonl', 'films').stderr
        run.send_signal(signal.SIGKILL)
    (films / 'out.jsonl').write_bytes((films / 'out.jsonl').read_bytes() + b'{"mkvx":1,"file":"films/g')
    assert b'no end' in at('summary', 'out.jsonl').stderr
    assert at('check', '--resume', 'out.jsonl', 'films').stdout.endswith(b', 23 of them new\n')
    at('check', '--format', 'jsonl', '--resume', 'one.jsonl', 'films')
    assert at('diff', 'one.jsonl', 'out.jsonl').stdout == b'24 the same\n'
    film = films / 'films/opus1.mkv'
    film.write_bytes(CASES['good'][0])
    os.utime(films / 'films/good1.mkv', (1, 1))     # as large as it was
    again = at('check', '--resume', 'out.jsonl', 'films')
    assert again.returncode == 5 and again.stdout.endswith(b', 2 of them new\n')
    assert json.loads(at('summary', '--json', 'out.jsonl').stdout)['superseded'] == 2
    changed = at('diff', 'one.jsonl', 'out.jsonl')
    assert changed.returncode == 1 and changed.stdout.decode().splitlines() == [
        'better: films/opus1.mkv: plays with losses, and now plays', '  gone: track number 2: unknown_codec_id (loss)',
        '23 the same, 1 better']
    assert [f['change'] for f in json.loads(at('diff', '--json', 'out.jsonl', 'one.jsonl').stdout)['files']] == ['worse']


def test_lists_and_names_that_are_no_text(at, films):
    strange = b'films/\xff\n<b>.mkv'
    os.rename(films / 'films/good0.mkv', os.fsencode(films) + b'/' + strange)
    listed = at('check', '--format', 'jsonl', '--files-from', '-', '-0', input=strange + b'\0films/good1.mkv')
    files = [json.loads(line) for line in listed.stdout.splitlines()]
    assert {f['file']: f.get('file_base64') for f in files} == {
        'films/\ufffd\n<b>.mkv': base64.b64encode(strange).decode(), 'films/good1.mkv': None}
    for again in b'1 of them new', b'0 of them new':
        assert again in at('check', '--resume', 'out.jsonl', '--files-from', '-', '--null', input=strange).stdout
    (films / 'list').write_bytes(b'films/opus0.mkv\n\nfilms/vp80.mkv')
    assert at('check', '--brief', '--files-from', 'list', 'films/good2.mkv').stdout.endswith(b'1 nothing plays, 1 plays with losses, 1 plays\n')
    at('check', '--resume', 'out.jsonl', 'films/opus0.mkv')
    at('summary', 'out.jsonl', '-o', 'page.html')
    page = (films / 'page.html').read_text()
    assert 'films/opus0.mkv' in page and '<b>' not in page and '<script' not in page
    assert at('check').returncode == 2 and at('check', '--files-from', '/no/such').returncode == 1


# Of a run over all NAMES: (options, exit code).
GATES = [
    ('', 5), ('--exit-zero', 0), ('--fail-on stops_the_media_process', 5), ('--accept vorbis_headers,stops_at_opening,process_ends', 4),
    ('--accept vorbis_headers --accept stops_at_opening,process_ends --fail-on stops_the_media_process', 0),
    ('--accept vorbis_headers,stops_at_opening,process_ends,unmapped_tag --fail-on nothing_plays', 0),
    ('--accept vorbis_headers,stops_at_opening,process_ends,unmapped_tag,unknown_codec_id,events_merged,no_duration', 1),
    ('--accept vorbis_headers,stops_at_opening,process_ends,unmapped_tag,unknown_codec_id,events_merged,no_duration,not_claimed', 0),
    ('--fail-on fine', 2),
]


def test_gates(at, films):
    """Also over results of a run before, of which nothing is examined again."""
    at('check', '--resume', 'out.jsonl', 'films')
    known = (films / 'out.jsonl').read_bytes()
    for options, code in GATES:
        assert at('check', *options.split(), 'films').returncode == code, options
        assert at('check', *options.split(), '--resume', 'out.jsonl', 'films').returncode == code, options
    assert (films / 'out.jsonl').read_bytes() == known


# Of single paths: (what is asked for, exit code).
ASKED = [
    ('--exit-zero none.mkv', 0), ('--fail-on undecided none.mkv', 0), ('--fail-on unreadable none.mkv', 1),
    ('--fail-on plays films/good0.mkv', 2), ('--fail-on unreadable --fail-on undecided films', 2), ('--resume films films/good0.mkv', 1),
    ('--resume no/such films/good0.mkv', 1), ('--files-from empty', 1), ('--files-from empty films/good0.mkv', 0),
    ('--shard 1/0 films', 2), ('--shard -1/3 films', 2), ('--shard 1/18446744073709551616 films', 2), ('--shard 0x1/2 films', 2),
    ('--late 2s --time-limit 0.1 --fail-on undecided films/good0.mkv', 6), ('--late 2s --time-limit 0.1 --accept time_limit films/good0.mkv', 0),
    ('--late 2s --time-limit 0.1 --fail-on nothing_plays films/good0.mkv', 0),
]


@pytest.mark.parametrize('asked, code', ASKED)
def test_exit_codes(at, films, asked, code):
    (films / 'empty').write_bytes(b'\n\n')
    assert at('check', *asked.split()).returncode == code


def test_a_share_of_a_list_goes_on(at, films):
    """Whatever the order of the list, and however it is separated; results of other shares neither count nor are made again."""
    names = sorted('films/' + path.name for path in (films / 'films').iterdir())
    (films / 'lines').write_text('\n'.join(names))
    (films / 'zeros').write_text('\0'.join(reversed(names)))
    shares = [(films / ('part%d' % part)) for part in (1, 2)]
    for part, options in enumerate((['lines'], ['zeros', '-0']), 1):
        at('check', '--shard', '%d/2' % part, '--files-from', *options, '--resume', 'part%d' % part)
    first, second = ([r['file'] for r in results(share)] for share in shares)
    assert sorted(first + second) == names and first and second
    (films / 'both').write_bytes(shares[0].read_bytes() + shares[1].read_bytes())
    for part, share in enumerate((first, second), 1):
        done = at('check', '--shard', '%d/2' % part, '--files-from', 'zeros', '--null', '--resume', 'both')
        assert done.stdout.startswith(b'both: %d files: ' % len(share)) and done.stdout.endswith(b', 0 of them new\n')
        assert (done.returncode == 5) == any('vorbis-none' in name for name in share)
    assert len(results(films / 'both')) == 24


def finding(code, weight='loss'):
    return {'code': code, 'weight': weight, 'sentence': 'it is so'}


def judged(file, verdict='plays_with_losses', *found, size=10, track=1, dropped=None, reason='so'):
    """A line as check writes it; what was found is of a track, or of the file if there is no track."""
    result = {'mkvx': 1, 'file': file, 'verdict': verdict, 'reason': reason, 'size': size, 'tracks': [], 'findings': list(found)}
    if track:
        of_track = {'number': track, 'type': 1, 'kind': 'video', 'codec_id': 'V', 'position': 0, 'findings': list(found)}
        result.update(tracks=[{**of_track, **({'dropped': dropped} if dropped else {})}], findings=[])
    return json.dumps(result) + '\n'


A, B, NOTE = finding('a'), finding('b'), finding('c', 'note')
# Of one file: (what a run said, what a later one did, change).
CHANGES = {
    'the same in other words': (judged('f', 'plays_with_losses', A), judged('f', 'plays_with_losses', {**A, 'sentence': 'thus'}, reason='x', size=9), None),
    'the same in another order': (judged('f', 'plays_with_losses', A, B), judged('f', 'plays_with_losses', B, A), None),
    'a verdict, whatever came': (judged('f', 'nothing_plays', NOTE), judged('f', 'undecided', NOTE, A), 'better'),
    'a worse verdict, whatever went': (judged('f', 'plays_with_losses', A), judged('f', 'unreadable'), 'worse'),
    'no Matroska is better than unreadable': (judged('f', 'unreadable'), judged('f', 'no_matroska'), 'better'),
    'one went': (judged('f', 'plays_with_losses', A, B), judged('f', 'plays_with_losses', B), 'better'),
    'one went for a note': (judged('f', 'plays_with_losses', A, B), judged('f', 'plays_with_losses', B, NOTE), 'better'),
    'one came': (judged('f', 'plays_with_losses', A), judged('f', 'plays_with_losses', A, B), 'worse'),
    'a drop came': (judged('f', 'plays_with_losses', A), judged('f', 'plays_with_losses', A, dropped=B), 'worse'),
    'a weight rose': (judged('f', 'plays_with_losses', finding('a', 'note')), judged('f', 'plays_with_losses', A), 'worse'),
    'a note came': (judged('f', 'plays'), judged('f', 'plays', NOTE), 'changed'),
    'one for another': (judged('f', 'plays_with_losses', A), judged('f', 'plays_with_losses', B), 'changed'),
    'of another track': (judged('f', 'plays_with_losses', A), judged('f', 'plays_with_losses', A, track=2), 'changed'),
    'of no track': (judged('f', 'plays_with_losses', A), judged('f', 'plays_with_losses', A, track=None), 'changed'),
    'a file more': ('', judged('f'), 'new'),
    'a file less': (judged('f'), '', 'gone'),
    'the last result counts': (judged('f', 'plays') + judged('f', 'unreadable'), judged('f', 'undecided') + judged('f', 'plays'), 'better'),
    'a line without its end': (judged('f'), judged('f') + judged('f', 'unreadable')[:-1], None),
}


@pytest.mark.parametrize('before, after, change', CHANGES.values(), ids=CHANGES)
def test_changes(mkvx, write, before, after, change):
    run = mkvx('diff', '--json', write('before', before.encode()), write('after', after.encode()))
    assert run.code == (1 if change else 0) and [f['change'] for f in run.json()['files']] == [change] * bool(change)
    assert run.json()['same'] == (not change) and ('has no end' in run.err) == (not after.endswith('\n') and after != '')


def test_all_changes_are_in_order(mkvx, write):
    """By change, then by path; what a file was and is."""
    before = ''.join(judged(*f) for f in (('z', 'plays', NOTE), ('y', 'plays'), ('b', 'unreadable'), ('a', 'undecided'), ('old',), ('s',)))
    after = ''.join(judged(*f) for f in (('s',), ('a', 'plays'), ('b', 'plays_with_losses', A), ('y', 'undecided'), ('z', 'plays'), ('fresh',)))
    run = mkvx('diff', '--json', write('before', before.encode()), write('after', after.encode()))
    assert [(f['change'], f['file'], f.get('before'), f.get('after')) for f in run.json()['files']] == [
        ('better', 'a', 'undecided', 'plays'), ('better', 'b', 'unreadable', 'plays_with_losses'), ('worse', 'y', 'plays', 'undecided'),
        ('changed', 'z', 'plays', 'plays'), ('new', 'fresh', None, 'plays_with_losses'), ('gone', 'old', 'plays_with_losses', None)]
    assert run.json()['files'][1]['new'] == [{'track': 1, 'code': 'a', 'weight': 'loss'}] and run.json()['same'] == 1


def test_summary_counts(mkvx, write):
    """Each code once a file, with the gravest of its weights; of a file that was judged again the last result, wherever it stands."""
    grave = finding('a', 'mute')
    one = judged('d', 'unreadable', size=1) + judged('c', 'plays_with_losses', A, grave, dropped=B, size=20) + judged('b', 'plays', NOTE, size=300)
    two = {'mkvx': 1, 'verdict': 'undecided', 'complete': True, 'files': [json.loads(line) for line in (
        judged('d', 'plays_with_losses', A, NOTE, size=4000), judged('e', 'undecided', B, track=None, size=50000),
        judged('a', 'plays_with_losses', NOTE, size=600000))]}
    files = write('one', one.encode()), write('two', (json.dumps(two) + '\n').encode())
    summary = mkvx('summary', '--json', '--list', '3', *files).json()
    assert [summary[key] for key in ('files', 'bytes', 'superseded', 'unlisted')] == [5, 654320, 1, 1]
    assert {v: n for v, n in summary['verdicts'].items() if n} == {'plays': 1, 'plays_with_losses': 3, 'undecided': 1}
    assert [tuple(f.values()) for f in summary['findings']] == [('a', 'mute', 2, 'c'), ('b', 'loss', 2, 'c'), ('c', 'note', 3, 'a')]
    assert [(f['file'], f['size']) for f in summary['worst']] == [('e', 50000), ('a', 600000), ('c', 20)]
    text = mkvx('summary', '--list', '0', *files).out
    assert '... and 4 more' in text and text.endswith('5 files: 1 undecided, 3 plays with losses, 1 plays; 0.7 MB\n')
    other = mkvx('summary', '--json', *reversed(files)).json()
    assert other['verdicts']['unreadable'] == 1 and other['bytes'] == 654320 - 4000 + 1


def test_page_of_a_summary(mkvx, write, tmp_path):
    """Names and reasons stay texts; no file with results is written over, by whatever name."""
    evil = '</td><img src="x" onerror=\'a\'>&amp;\x1b]'
    listed = write('list', (judged(evil, reason=evil) + judged('g', 'plays_with_losses', finding(evil))).encode())
    (tmp_path / 'link').symlink_to(listed)
    (tmp_path / 'same').hardlink_to(listed)
    kept = listed.read_bytes()
    for name, code in ('list', 2), ('link', 2), ('same', 2), ('no/such', 1):
        refused = mkvx('summary', listed, '-o', tmp_path / name)
        assert refused.code == code and refused.out == '' and refused.err.count('\n') == 1 and listed.read_bytes() == kept
    assert mkvx('summary', listed, '-o', tmp_path / 'page').code == 0
    page = (tmp_path / 'page').read_text()
    assert '<img' not in page and '\x1b' not in page and 'http' not in page
    assert page.count('&lt;/td&gt;&lt;img src=&quot;x&quot; onerror=') == 3 and page.count('&amp;amp;') == 3


@pytest.mark.parametrize('content', [b'{"mkvx":1}\nmore\n', b'notes without an end',
                                     judged('g', 'plays').replace('"plays"', '"fine"').encode()])
@pytest.mark.parametrize('command', [['summary', 'bad'], ['diff', 'bad', 'bad'], ['diff', 'none', 'none'], ['check', '--resume', 'bad', 'films']])
def test_results_that_are_none(at, films, command, content):
    """Also: nothing of such a file is overwritten."""
    (films / 'bad').write_bytes(content)
    failed = at(*command)
    assert failed.returncode == (2 if command[0] == 'diff' else 1) and failed.stdout == b'' and failed.stderr.count(b'\n') == 1
    assert (films / 'bad').read_bytes() == content
