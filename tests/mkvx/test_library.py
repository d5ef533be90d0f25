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
    for options, code in GATES:
        assert at('check', *options.split(), 'films').returncode == code, options


@pytest.mark.parametrize('command', [['summary', 'bad'], ['diff', 'bad', 'bad'], ['diff', 'none', 'none'], ['check', '--resume', 'bad', 'films']])
def test_results_that_are_none(at, films, command):
    """Also: nothing of such a file is overwritten."""
    (films / 'bad').write_bytes(b'{"mkvx":1}\nmore\n')
    failed = at(*command)
    assert failed.returncode == (2 if command[0] == 'diff' else 1) and failed.stdout == b'' and failed.stderr.count(b'\n') == 1
    assert (films / 'bad').read_bytes() == b'{"mkvx":1}\nmore\n'
